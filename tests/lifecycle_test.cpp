#include "exports.h"

#include <atomic>
#include <fstream>
#include <iostream>
#include <random>

namespace client {

namespace {

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
        EXPECT_EQ(call("clearAll"), "0");
    }
}

/// One thread launches, this one exits at any moment, and further ones call everything, ask, launch and exit in
/// between.
TEST_F(Lifecycle, cyclesNeitherHangNorGrow)
{
    const unsigned int cycles = setting("TARNEL_CYCLES", 500);
    const unsigned int seed = setting("TARNEL_SEED", std::random_device()());
    std::cout << "seed " << seed << ", cycles " << cycles << '\n';
    std::mt19937 random(seed);
    std::atomic<bool> isInterfering = false;
    std::atomic<bool> isOver = false;
    std::atomic<int> callers = 4;
    std::vector<std::atomic<unsigned int>> served(exports().size());
    const auto exitUntil = [](const std::function<bool()> &isLeft) {
        return waitUntil([&] {
            exitCache();
            return isLeft();
        });
    };
    const auto callEverything = [&](std::mt19937 own) {
        while (!isOver) {
            if (isInterfering && own() % 8 == 0)
                own() % 2 == 0 ? exitCache() : launchCache();
            const std::size_t index = own() % exports().size();
            const std::string code = exports()[index].callWith(own() % 4);
            const bool isServed = code[0] == '0' || code == "8" || code == "11";
            EXPECT_TRUE(isServed || code == "255") << exports()[index].name << ' ' << code;
            served[index] += isServed;
            if (!isServed && getState() == TARNEL_STATE_NONE && getLaunchCacheResult() == TARNEL_NOT_AVAILABLE)
                std::this_thread::sleep_for(std::chrono::microseconds(own() % 3000));
        }
        --callers;
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < callers; ++i)
        threads.emplace_back(callEverything, std::mt19937(random()));

    std::pair<long, long> early;
    for (unsigned int cycle = 0; cycle < cycles; ++cycle) {
        if (cycle == cycles / 10)
            early = footprint();
        isInterfering = cycle % 2 == 1;
        std::atomic<bool> isEnded = false;
        const std::jthread launch([&] {
            launchCache();
            isEnded = true;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(random() % (cycle % 50 == 0 ? 200000 : 6000)));
        // The launch may not have been entered yet, which makes this exit one without a launch.
        ASSERT_TRUE(exitUntil([&] { return isEnded.load(); })) << cycle;
    }
    isInterfering = false;
    {
        const RunningCache cache;
        for (std::size_t i = 0; i < served.size(); ++i)
            EXPECT_TRUE(waitUntil([&] { return served[i] > 0; })) << exports()[i].name;
    }
    isOver = true;
    // One of them may sit in a launch of its own.
    ASSERT_TRUE(exitUntil([&] { return callers == 0; }));
    threads.clear();

    const std::pair<long, long> late = footprint();
    EXPECT_LE(late.second, early.second);
#ifndef TARNEL_SANITIZED // Sanitizers keep what was released.
    EXPECT_LT(late.first, early.first + 1024);
#endif
}

} // namespace client
