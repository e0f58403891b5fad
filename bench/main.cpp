#include "bench/table.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr unsigned int quickDivisor = 10;
constexpr double growth = 100; ///< From the small to the large ones.

struct Options {
    unsigned int divisor = 1;
    bench::Clock clock = bench::Clock::Wall;
    std::vector<std::string> names; ///< Empty for all.

    /// A name stands for the sizes of its workload, too: "W1" for "W1-large", and "W5" for "W5a".
    [[nodiscard]] bool isWanted(const std::string &workload) const
    {
        return names.empty() || std::any_of(names.begin(), names.end(), [&](const std::string &name) {
                   return workload.compare(0, name.size(), name) == 0 &&
                          (workload.size() == name.size() || std::isdigit(workload[name.size()]) == 0);
               });
    }
};

/// False for an argument that is none.
bool parse(int argc, char **argv, Options &options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--quick")
            options.divisor = quickDivisor;
        else if (argument == "--processor-time")
            options.clock = bench::Clock::Processor;
        else if (argument.front() == 'W')
            options.names.push_back(argument);
        else
            return false;
    }
    return true;
}

void run(const Options &options)
{
    bench::Table table;
    if (options.divisor != 1)
        std::printf("Quick: everything is %u times smaller, and so less exact.\n", options.divisor);
    if (options.clock == bench::Clock::Processor)
        std::printf("Time of the processor: without what waits for the disk.\n");
    bench::Table::printHeader();
    // Before there are threads.
    const bench::Workload memoryWorkload = bench::memoryWorkload(options.divisor);
    if (options.isWanted(memoryWorkload.name))
        bench::Table::printMemory(memoryWorkload, bench::measureMemory(memoryWorkload));

    const client::TemporaryDirectory directory;
    bench::Fixtures fixtures;
    for (const bench::Workload &workload : bench::workloads(options.divisor)) {
        if (options.isWanted(workload.name))
            table.printRow(workload, bench::measure(workload, fixtures, options.clock));
    }
    for (const char *name : {"W1", "W2"})
        table.printGrowth(name, growth);
    if (!table.isValid())
        throw std::runtime_error("both sides differ");
}

} // namespace

int main(int argc, char **argv)
{
    // Qt warns of an application that is launched anew on another thread, as happens for every file here.
    ::setenv("QT_LOGGING_RULES", "default.warning=false", 0);
    try {
        Options options;
        if (!parse(argc, argv, options)) {
            std::fprintf(stderr, "usage: %s [--quick] [--processor-time] [W1 W2 ...]\n", argv[0]);
            return EXIT_FAILURE;
        }
        run(options);
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "failed: %s\n", failure.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
