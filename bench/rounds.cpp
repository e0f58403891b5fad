#include "bench/rounds.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr double nanosecondsPerMicrosecond = 1000;

/// `values` are in order and not empty.
double median(const std::vector<double> &values)
{
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::vector<double> sorted(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values;
}

} // namespace

bool Rounds::ReportContext(const Context &)
{
    return true;
}

void Rounds::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        const std::string &name = run.run_name.function_name;
        const std::size_t slash = name.find('/');
        Times &times = m_workloads[name.substr(0, slash)];
        const bool isRealTime = !run.run_name.time_type.empty();
        (name.substr(slash + 1) == "library" ? times.library : times.baseline)
            .push_back(isRealTime ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime());
    }
}

void Rounds::print() const
{
    std::printf("%-16s %12s %12s %7s   %s\n", "workload", "library us", "baseline us", "ratio", "lowest-highest ratio");
    for (const auto &[workload, times] : m_workloads) {
        std::vector<double> ratios;
        for (std::size_t i = 0; i < std::min(times.library.size(), times.baseline.size()); ++i)
            ratios.push_back(times.library[i] / times.baseline[i]);
        if (ratios.empty())
            continue;
        ratios = sorted(ratios);
        std::printf("%-16s %12.2f %12.2f %7.2f   %.2f-%.2f in %zu rounds\n", workload.c_str(),
                    median(sorted(times.library)) / nanosecondsPerMicrosecond,
                    median(sorted(times.baseline)) / nanosecondsPerMicrosecond, median(ratios), ratios.front(),
                    ratios.back(), ratios.size());
    }
}
