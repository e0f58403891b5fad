#include "exports.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <vector>

namespace client {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

bool isRunning()
{
    return getState() == TARNEL_STATE_RUNNING;
}

unsigned int add()
{
    const Text request(R"({"D":{"items":[{"id":1,"iso":"en"}]}})");
    return addLocales(request.units(), request.length());
}

unsigned int read()
{
    return call("getLocale", {1}) == "0 1|en" ? 0 : TARNEL_NOT_AVAILABLE;
}

/// A number from the environment, so that one binary serves both a quick run and a thorough one.
unsigned int setting(const char *name, unsigned int otherwise)
{
    const char *value = std::getenv(name);
    return value != nullptr ? static_cast<unsigned int>(std::atoi(value)) : otherwise;
}

/// What the process holds of the system.
struct Footprint {
    long residentKiB = 0;
    long descriptors = 0;

    static Footprint now()
    {
        Footprint footprint;
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            if (word == "VmRSS:")
                status >> footprint.residentKiB;
        }
        const std::filesystem::directory_iterator files("/proc/self/fd");
        footprint.descriptors = std::distance(begin(files), end(files));
        return footprint;
    }
};

/// Keeps others from writing to the database, as another program would with a connection of its own.
class ForeignLock
{
public:
    ForeignLock()
    {
        sqlite3_open("CacheDb", &m_connection);
        m_isHeld = sqlite3_exec(m_connection, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    ForeignLock(const ForeignLock &) = delete;
    ForeignLock &operator=(const ForeignLock &) = delete;
    ~ForeignLock() { sqlite3_close(m_connection); }
    [[nodiscard]] bool isHeld() const { return m_isHeld; }

private:
    sqlite3 *m_connection = nullptr;
    bool m_isHeld = false;
};

} // namespace

class Lifecycle : public testing::Test
{
private:
    TemporaryDirectory m_directory;
};

TEST_F(Lifecycle, stateAndResultFollowTheLaunch)
{
    for (const unsigned int result : {TARNEL_DATABASE_CREATED, TARNEL_SUCCESS}) {
        EXPECT_EQ(getState(), TARNEL_STATE_NONE);
        EXPECT_EQ(getLaunchCacheResult(), TARNEL_NOT_AVAILABLE);
        const RunningCache cache;
        EXPECT_EQ(getLaunchCacheResult(), result);
    }
    EXPECT_EQ(getState(), TARNEL_STATE_NONE);
    EXPECT_EQ(getLaunchCacheResult(), TARNEL_NOT_AVAILABLE);
}

TEST_F(Lifecycle, superfluousCallsLeaveTheCacheAlone)
{
    exitCache();
    exitCache();
    const RunningCache cache;
    launchCache();
    EXPECT_EQ(getState(), TARNEL_STATE_RUNNING) << "a second launch has returned, and the first goes on";
    EXPECT_EQ(add(), TARNEL_SUCCESS);
}

// An exit that is held up between its wish and its deed must not take the cache from the launch that follows.
TEST_F(Lifecycle, exitOfAFormerLaunchLeavesTheNextOneAlone)
{
    std::thread former(launchCache);
    std::atomic<bool> isBusy = true;
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i)
        callers.emplace_back([&] {
            while (isBusy)
                read();
        });
    for (int round = 0; round < 100 && waitUntil(isRunning); ++round) {
        std::thread exit(exitCache);
        former.join();
        former = std::thread(launchCache);
        exit.join();
    }
    EXPECT_TRUE(waitUntil(isRunning));
    isBusy = false;
    for (std::thread &caller : callers)
        caller.join();
    exitCache();
    former.join();
}

TEST_F(Lifecycle, questionsDoNotWaitForALongCallAndExitDoes)
{
    std::thread launch(launchCache);
    ASSERT_TRUE(waitUntil(isRunning));
    ASSERT_EQ(add(), TARNEL_SUCCESS);
    std::atomic<bool> isAdding = true;
    std::atomic<unsigned int> addResult = TARNEL_SUCCESS;
    std::thread writer;
    {
        const ForeignLock lock;
        ASSERT_TRUE(lock.isHeld());
        writer = std::thread([&] {
            addResult = add();
            isAdding = false;
        });
        std::this_thread::sleep_for(200ms);
        ASSERT_TRUE(isAdding);
        const auto begin = Clock::now();
        for (int i = 0; i < 1000; ++i) {
            ASSERT_EQ(getState(), TARNEL_STATE_RUNNING);
            ASSERT_EQ(getLaunchCacheResult(), TARNEL_DATABASE_CREATED);
        }
        EXPECT_LT(Clock::now() - begin, 500ms);
        EXPECT_TRUE(isAdding);

        exitCache();
        EXPECT_NE(addResult, TARNEL_SUCCESS) << "the exit returned during the call";
    }
    writer.join();
    launch.join();
}

/// One thread launches, this one exits at any moment, and further ones call, ask, launch and exit in between.
TEST_F(Lifecycle, cyclesNeitherHangNorGrow)
{
    const unsigned int cycles = setting("TARNEL_CYCLES", 1000);
    const unsigned int seed = setting("TARNEL_SEED", std::random_device()());
    std::cout << "seed " << seed << ", cycles " << cycles << '\n';
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> anyDelay(0, 6000);
    std::atomic<bool> isInterfering = false;
    std::atomic<bool> isOver = false;
    std::atomic<unsigned int> calls = 0;
    const auto interfere = [&](unsigned int threadSeed) {
        std::mt19937 threadRandom(threadSeed);
        while (!isOver) {
            if (isInterfering && threadRandom() % 2 == 0)
                exitCache();
            else if (isInterfering && threadRandom() % 2 == 0)
                launchCache();
            if (add() == TARNEL_SUCCESS && read() == TARNEL_SUCCESS)
                ++calls;
            std::this_thread::sleep_for(std::chrono::microseconds(threadRandom() % 3000));
        }
    };
    std::thread interferers[] = {std::thread(interfere, random()), std::thread(interfere, random())};

    Footprint early;
    unsigned int runs = 0;
    const auto begin = Clock::now();
    for (unsigned int cycle = 0; cycle < cycles; ++cycle) {
        if (cycle == cycles / 10)
            early = Footprint::now();
        isInterfering = cycle % 2 == 1;
        std::atomic<bool> isEnded = false;
        std::thread launch([&] {
            launchCache();
            isEnded = true;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(anyDelay(random)));
        runs += isRunning() ? 1 : 0;
        // The launch may not have been entered yet, which makes this exit one without a launch.
        ASSERT_TRUE(waitUntil([&] {
            exitCache();
            return isEnded.load();
        })) << cycle;
        launch.join();
    }
    const std::chrono::duration<double> taken = Clock::now() - begin;
    isInterfering = false;
    isOver = true;
    // An interferer may sit in a launch of its own.
    std::thread ender([&] {
        while (calls != ~0U) {
            exitCache();
            std::this_thread::sleep_for(1ms);
        }
    });
    for (std::thread &thread : interferers)
        thread.join();
    std::cout << runs << " of the launches seen running, " << calls << " calls served\n";
    EXPECT_GT(runs, 0U);
    EXPECT_GT(calls, 0U);
    calls = ~0U;
    ender.join();

    const Footprint late = Footprint::now();
    std::cout << taken.count() << " s; resident " << early.residentKiB << " -> " << late.residentKiB
              << " KiB; descriptors " << early.descriptors << " -> " << late.descriptors << '\n';
    EXPECT_LE(late.descriptors, early.descriptors);
#ifndef TARNEL_SANITIZED // Sanitizers keep what was released.
    EXPECT_LT(late.residentKiB, early.residentKiB + 4096);
#endif
}

} // namespace client
