#include "bench/table.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr double growth = 100; ///< From the small to the large ones.

/// Of these, memory and page faults are shown too.
bool hasCosts(const std::string &name)
{
    return name == "W1" || name == "W2" || name == "W4" || name == "W4-sites";
}

template <class Workload>
std::vector<Workload> wanted(const bench::Options &options, std::vector<Workload> workloads)
{
    std::erase_if(workloads, [&](const Workload &workload) { return !options.isWanted(workload.name); });
    return workloads;
}

void runBesideBaseline(const bench::Options &options, bench::Fixtures &fixtures, bench::Table &table)
{
    const auto workloads = wanted(options, bench::workloads(options.divisor));
    const auto startWorkloads = wanted(options, bench::startWorkloads(options.divisor));
    if (workloads.empty() && startWorkloads.empty())
        return;
    bench::Table::printHeader();
    for (const bench::Workload &workload : workloads) {
        table.printRow(workload, bench::measure(workload, fixtures, options.clock), "rounds");
        if (hasCosts(workload.name)) {
            fixtures.provide(workload.fixture);
            table.printCosts(workload, bench::costsAlone(workload, options, 0));
        }
    }
    for (const bench::Workload &workload : startWorkloads) {
        fixtures.provide(workload.fixture);
        table.printRow(workload, bench::measureStarts(workload, options), "starts");
    }
    for (const char *name : {"W1", "W2"})
        table.printGrowth(name, growth);
}

void runTogether(const bench::Options &options, bench::Fixtures &fixtures, bench::Table &table)
{
    const auto workloads = wanted(options, bench::togetherWorkloads());
    if (workloads.empty())
        return;
    bench::Table::printTogetherHeader();
    for (const bench::TogetherWorkload &workload : workloads) {
        bench::Stage stage(fixtures, options.divisor,
                           [&](const bench::TogetherRow &row) { table.printTogether(workload.name, row); });
        workload.measure(stage);
    }
}

void run(const bench::Options &options)
{
    if (options.divisor != 1)
        std::printf("Quick: everything is %u times smaller, and so less exact.\n", options.divisor);
    if (options.clock == bench::Clock::Processor)
        std::printf("Time of the processor: without what waits for the disk.\n");
    const client::TemporaryDirectory directory;
    bench::Fixtures fixtures;
    bench::Table table;
    runBesideBaseline(options, fixtures, table);
    runTogether(options, fixtures, table);
    if (!table.isValid())
        throw std::runtime_error("the results differ");
}

void runAlone(const bench::Options &options)
{
    std::vector<bench::Workload> workloads = bench::workloads(options.divisor);
    for (bench::Workload &workload : bench::startWorkloads(options.divisor))
        workloads.push_back(std::move(workload));
    for (const bench::Workload &workload : workloads) {
        if (workload.name == options.names.front())
            bench::tell(bench::costHere(workload, options));
    }
}

} // namespace

int main(int argc, char **argv)
{
    // Qt warns of an application that is launched anew on another thread, as happens for every file here.
    ::setenv("QT_LOGGING_RULES", "default.warning=false", 0);
    try {
        bench::Options options;
        if (!bench::parse(argc, argv, options)) {
            std::fprintf(stderr,
                         "usage: %s [--quick] [--processor-time] [--memory-not-counted] [--starts N] [W1 W2 ...]\n",
                         argv[0]);
            return EXIT_FAILURE;
        }
        if (!options.isMemoryCounted)
            sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
        if (options.alone)
            runAlone(options);
        else
            run(options);
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "failed: %s\n", failure.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
