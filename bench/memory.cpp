#include "bench/baseline/baseline.h"
#include "bench/rounds.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>

namespace bench {

namespace {

/// A size that the system gives in its account of the process, such as "VmHWM".
std::size_t accountedBytes(const std::string &name)
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        std::size_t kibibytes = 0;
        if (word == name + ":" && status >> kibibytes)
            return kibibytes * 1024;
    }
    throw std::runtime_error("the system does not account for memory");
}

template <class Open>
std::size_t peakOf(const Workload &workload, Open open)
{
    const client::TemporaryDirectory directory;
    Fixtures fixtures;
    fixtures.provide(workload.fixture);
    const Task task = workload.prepare();
    const auto side = open();
    Answers answers;
    // What was used before and is free now would hide what the call takes.
    ::malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5"; // Lets the peak begin anew.
    const std::size_t before = accountedBytes("VmRSS");
    task(*side, answers);
    return accountedBytes("VmHWM") - before;
}

/// Calls `measure` in a process of its own.
template <class Measure>
std::size_t inOwnProcess(Measure measure)
{
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        std::size_t bytes = 0;
        try {
            bytes = measure();
        } catch (const std::exception &failure) {
            std::fprintf(stderr, "failed: %s\n", failure.what());
        }
        const bool isTold = bytes > 0 && ::write(ends[1], &bytes, sizeof(bytes)) == sizeof(bytes);
        std::_Exit(isTold ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    ::close(ends[1]);
    std::size_t bytes = 0;
    const bool isTold = child > 0 && ::read(ends[0], &bytes, sizeof(bytes)) == sizeof(bytes);
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    if (!isTold)
        throw std::runtime_error("memory cannot be measured");
    return bytes;
}

} // namespace

Memory measureMemory(const Workload &workload)
{
    return {inOwnProcess([&] { return peakOf(workload, [] { return std::make_unique<Library>(); }); }),
            inOwnProcess([&] { return peakOf(workload, [] { return std::make_unique<Baseline>(baselineFile); }); })};
}

} // namespace bench
