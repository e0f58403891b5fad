#include "exports.h"

#include <atomic>
#include <fstream>
#include <iostream>
#include <random>

namespace client {

namespace {

bool isRunning()
{
    return getState() == TARNEL_STATE_RUNNING;
}

std::string add()
{
    return call("addLocales", {items(R"({"id":1,"iso":"en"})")});
}

/// What the process holds of the system: resident pages, and descriptors.
std::pair<long, long> footprint()
{
    long size = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return {resident, std::distance(begin(files), end(files))};
}

} // namespace

using Lifecycle = DirectoryTest;

TEST_F(Lifecycle, stateAndResultFollowTheLaunch)
{
    exitCache(); // Of nothing, which is not remembered.
    for (const unsigned int result : {TARNEL_DATABASE_CREATED, TARNEL_SUCCESS}) {
        EXPECT_EQ(getState(), TARNEL_STATE_NONE);
        EXPECT_EQ(getLaunchCacheResult(), TARNEL_NOT_AVAILABLE);
        const RunningCache cache;
        launchCache();
        EXPECT_EQ(getState(), TARNEL_STATE_RUNNING) << "a second launch has returned, and the first goes on";
        EXPECT_EQ(getLaunchCacheResult(), result);
        EXPECT_EQ(add(), "0");
    }
}

/// One thread launches, this one exits at any moment, and further ones call, ask, launch and exit in between.
TEST_F(Lifecycle, cyclesNeitherHangNorGrow)
{
    const unsigned int cycles = setting("TARNEL_CYCLES", 1000);
    const unsigned int seed = setting("TARNEL_SEED", std::random_device()());
    std::cout << "seed " << seed << ", cycles " << cycles << '\n';
    std::mt19937 random(seed);
    std::atomic<bool> isInterfering = false;
    std::atomic<int> interferers = 2;
    std::atomic<unsigned int> calls = 0;
    std::atomic<bool> isOver = false;
    const auto exitUntil = [](const std::function<bool()> &isLeft) {
        return waitUntil([&] {
            exitCache();
            return isLeft();
        });
    };
    const auto interfere = [&](std::mt19937 own) {
        while (!isOver) {
            if (isInterfering && own() % 2 == 0)
                exitCache();
            else if (isInterfering && own() % 2 == 0)
                launchCache();
            calls += add() == "0" && call("getLocale", {1}) == "0 1|en";
            std::this_thread::sleep_for(std::chrono::microseconds(own() % 3000));
        }
        --interferers;
    };
    std::jthread one(interfere, std::mt19937(random()));
    std::jthread other(interfere, std::mt19937(random()));

    std::pair<long, long> early;
    unsigned int runs = 0;
    for (unsigned int cycle = 0; cycle < cycles; ++cycle) {
        if (cycle == cycles / 10)
            early = footprint();
        isInterfering = cycle % 2 == 1;
        std::atomic<bool> isEnded = false;
        std::jthread launch([&] {
            launchCache();
            isEnded = true;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 6000));
        runs += isRunning();
        // The launch may not have been entered yet, which makes this exit one without a launch.
        ASSERT_TRUE(exitUntil([&] { return isEnded.load(); })) << cycle;
    }
    isInterfering = false;
    isOver = true;
    // One of them may sit in a launch of its own.
    ASSERT_TRUE(exitUntil([&] { return interferers == 0; }));
    EXPECT_GT(runs, 0U);
    EXPECT_GT(calls, 0U);

    const std::pair<long, long> late = footprint();
    EXPECT_LE(late.second, early.second);
#ifndef TARNEL_SANITIZED // Sanitizers keep what was released.
    EXPECT_LT(late.first, early.first + 1024);
#endif
}

} // namespace client
