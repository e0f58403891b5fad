#include "exports.h"

#include <atomic>
#include <fstream>
#include <iostream>
#include <optional>
#include <random>

#include <malloc.h>

namespace client {

namespace {

/// What the process holds of the system: resident pages, and descriptors.
std::pair<long, long> footprint()
{
    ::malloc_trim(0);
    long size = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return {resident, std::distance(begin(files), end(files))};
}

void expectNoGrowth(const std::pair<long, long> &early, [[maybe_unused]] long pages)
{
    const std::pair<long, long> late = footprint();
    EXPECT_LE(late.second, early.second);
#ifndef TARNEL_SANITIZED // Sanitizers keep what was released.
    EXPECT_LE(late.first, early.first + pages);
#endif
}

/// Calls everything, at random, on four threads.
void callMixed(unsigned int calls)
{
    std::vector<std::jthread> threads;
    for (unsigned int thread = 0; thread < 4; ++thread)
        threads.emplace_back([own = std::mt19937(thread), left = calls / 4]() mutable {
            for (; left > 0; --left) {
                const Export &function = exports()[own() % exports().size()];
                const std::string code = function.callWith(static_cast<unsigned int>(own() % 100));
                EXPECT_TRUE(code[0] == '0' || code == "8" || code == "11") << function.name << ' ' << code;
                std::error_code noLog; // Which is -1.
                EXPECT_LE(static_cast<std::int64_t>(std::filesystem::file_size("CacheDb-wal", noLog)), 17 << 20);
            }
        });
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
    std::atomic<int> callers = 8;
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

    expectNoGrowth(early, 1024);
    printTried("launches and exits beside 8 threads that call everything", cycles);
}

TEST_F(Lifecycle, callsWithoutRestLeaveNothingBehind)
{
    const unsigned int calls = setting("TARNEL_CALLS", 20000);
    const std::string devices =
        items(R"({"id":#,"sections":[{"id":1,"zones":[{"id":1}]}],"users":[{"user_index":1}]})", 1, 3000);
    std::uintmax_t fresh = 0;
    for (const bool isUsed : {false, true}) {
        const TemporaryDirectory directory;
        std::optional<RunningCache> cache(std::in_place);
        EXPECT_EQ(call("addDevices", {devices}), "0");
        if (isUsed) {
            callMixed(calls / 2);
            const std::pair<long, long> early = footprint();
            callMixed(calls / 2);
            expectNoGrowth(early, 256);
            EXPECT_EQ(call("clearAll"), "0");
            EXPECT_EQ(call("addDevices", {devices}), "0");
        }
        cache.reset();
        const std::uintmax_t size = std::filesystem::file_size("CacheDb");
        EXPECT_LE(size, isUsed ? fresh + fresh / 5 : size);
        fresh = size;
    }
    printTried("mixed calls of 4 threads", calls);
}

} // namespace client
