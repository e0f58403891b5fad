#include "exports.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>

namespace client {

using namespace std::chrono_literals;

/// Everything at once, while the cache is exited and launched again now and then.
TEST(Threads, mayCallEverything)
{
    const char *wanted = std::getenv("TARNEL_SECONDS");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(wanted != nullptr ? std::atoi(wanted) : 3);
    const unsigned int seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    const TemporaryDirectory directory;
    std::vector<Export> all = exports();
    std::erase_if(all, [](const Export &function) { return !function.needsCache(); });
    std::vector<std::atomic<unsigned int>> served(all.size());
    std::vector<std::thread> callers;
    for (unsigned int i = 0; i < 4; ++i)
        callers.emplace_back([&, random = std::mt19937(seed + i)]() mutable {
            while (std::chrono::steady_clock::now() < end) {
                const std::size_t index = random() % all.size();
                const std::string code = all[index].callWith(random() % 4);
                served[index] += code[0] == '0' || code == "8" ? 1 : 0;
                EXPECT_TRUE(code[0] == '0' || code == "8" || code == "11" || code == "255") << all[index].name << code;
                if (getState() == TARNEL_STATE_NONE)
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
    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_GT(served[i], 0U) << all[i].name;
}

} // namespace client
