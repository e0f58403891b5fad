#include "exports.h"

#include <atomic>
#include <chrono>
#include <iostream>
#include <random>

namespace client {

using namespace std::chrono_literals;

/// Everything at once, while the cache is exited and launched again now and then.
using Threads = DirectoryTest;

TEST_F(Threads, mayCallEverything)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(setting("TARNEL_SECONDS", 3));
    const unsigned int seed = setting("TARNEL_SEED", std::random_device()());
    std::cout << "seed " << seed << '\n';
    std::vector<std::atomic<unsigned int>> served(exports().size());
    std::vector<std::jthread> callers;
    for (unsigned int i = 0; i < 4; ++i)
        callers.emplace_back([&, random = std::mt19937(seed + i)]() mutable {
            while (std::chrono::steady_clock::now() < end) {
                const std::size_t index = random() % exports().size();
                const std::string code = exports()[index].callWith(random() % 4);
                const bool isServed = code[0] == '0' || code == "8" || code == "11";
                EXPECT_TRUE(isServed || code == "255") << exports()[index].name << ' ' << code;
                served[index] += isServed;
                if (getState() == TARNEL_STATE_NONE)
                    getLaunchCacheResult();
            }
        });
    while (std::chrono::steady_clock::now() < end) {
        const RunningCache cache;
        std::this_thread::sleep_for(200ms);
    }
    callers.clear();
    for (std::size_t i = 0; i < served.size(); ++i)
        EXPECT_GT(served[i], 0U) << exports()[i].name;
}

} // namespace client
