#include "bench/log.h"

#include "bench/clock.h"
#include "bench/fixtures.h"

#include <thread>

namespace bench {

namespace fs = std::filesystem;

namespace {

std::uintmax_t logSize()
{
    std::error_code absent;
    const std::uintmax_t size = fs::file_size(std::string(libraryFile) + "-wal", absent);
    return absent ? 0 : size;
}

} // namespace

std::uintmax_t greatestLog(std::chrono::duration<double> time)
{
    std::uintmax_t greatest = 0;
    for (const double end = now(Clock::Wall) + time.count(); now(Clock::Wall) < end;) {
        greatest = std::max(greatest, logSize());
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return greatest;
}

std::optional<double> secondsUntilEmptyLog()
{
    const double start = now(Clock::Wall);
    while (logSize() > 0) {
        if (now(Clock::Wall) - start > longestEmptying)
            return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return now(Clock::Wall) - start;
}

} // namespace bench
