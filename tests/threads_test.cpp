#include "client.h"
#include "exports.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <set>

namespace client {

using namespace std::chrono_literals;

TEST(Exports, withoutACacheEveryCallSaysSo)
{
    ASSERT_FALSE(exports().empty());
    for (const Export &function : exports()) {
        if (function.needsCache()) {
            EXPECT_EQ(function.call(1), TARNEL_NOT_AVAILABLE) << function.name;
        }
    }
}

TEST(Exports, everyFreeFunctionRefusesNull)
{
    for (const Export &function : exports()) {
        if (!function.parameters.empty() && !function.needsCache()) {
            EXPECT_EQ(function.call(0), TARNEL_INVALID_ARGUMENT) << function.name;
        }
    }
}

/// Everything at once, while the cache is exited and launched again now and then.
TEST(Threads, mayCallEverything)
{
    const char *wanted = std::getenv("TARNEL_SECONDS");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(wanted != nullptr ? std::atoi(wanted) : 3);
    const unsigned int seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    const std::set<unsigned int> expected{TARNEL_SUCCESS, TARNEL_NOT_FOUND, TARNEL_PARENT_NOT_FOUND,
                                          TARNEL_INVALID_REQUEST, TARNEL_NOT_AVAILABLE};
    const TemporaryDirectory directory;
    const std::vector<Export> &all = exports();
    std::vector<std::array<std::atomic<unsigned int>, 256>> codes(all.size());
    std::vector<std::thread> callers;
    for (unsigned int i = 0; i < 4; ++i)
        callers.emplace_back([&, random = std::mt19937(seed + i)]() mutable {
            while (std::chrono::steady_clock::now() < end) {
                const std::size_t index = random() % all.size();
                if (all[index].needsCache())
                    ++codes[index][all[index].call(random() % 8) & 255U];
                else if (getState() == TARNEL_STATE_NONE)
                    getLaunchCacheResult();
            }
        });
    unsigned int launches = 0;
    for (; std::chrono::steady_clock::now() < end; ++launches) {
        const RunningCache cache;
        std::this_thread::sleep_for(200ms);
    }
    for (std::thread &caller : callers)
        caller.join();
    std::cout << launches << " launches\n";
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (unsigned int code = 0; code < 256; ++code)
            EXPECT_TRUE(codes[i][code] == 0 || expected.count(code) == 1) << all[i].name << " gave " << code;
        EXPECT_TRUE(!all[i].needsCache() || codes[i][TARNEL_SUCCESS] + codes[i][TARNEL_NOT_FOUND] > 0) << all[i].name;
    }
}

} // namespace client
