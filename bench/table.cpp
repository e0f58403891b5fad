#include "bench/table.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

constexpr int descriptionWidth = 68;

/// `values` are not empty.
double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

void Table::printHeader()
{
    std::printf("| %-8s | %-*s | %10s | %10s | %5s | %-17s |\n", "", descriptionWidth, "workload", "library",
                "baseline", "ratio", "spread");
    std::printf("|---|---|---|---|---|---|\n");
}

void Table::printRow(const Workload &workload, const Measurement &measurement)
{
    std::vector<double> ratios;
    for (std::size_t i = 0; i < measurement.library.size(); ++i)
        ratios.push_back(measurement.library[i] / measurement.baseline[i]);
    const auto [lowest, highest] = std::minmax_element(ratios.begin(), ratios.end());
    const Medians medians{median(measurement.library), median(measurement.baseline)};
    m_medians[workload.name] = medians;
    m_isValid = m_isValid && measurement.isSame;
    std::printf("| %-8s | %-*s | %7.1f ms | %7.1f ms |", workload.name.c_str(), descriptionWidth,
                workload.description.c_str(), medians.library * 1e3, medians.baseline * 1e3);
    if (measurement.isSame)
        std::printf(" %5.2f | %.2f-%.2f, %zu rounds |\n", median(ratios), *lowest, *highest, ratios.size());
    else
        std::printf(" %5s | %-17s |\n", "void", "the results differ");
    std::fflush(stdout);
}

void Table::printMemory(const Workload &workload, const Memory &memory)
{
    const auto inMegabytes = [](std::size_t bytes) { return static_cast<double>(bytes) * 1e-6; };
    std::printf("| %-8s | %-*s | %7.1f MB | %7.1f MB | %5.2f | %-17s |\n", workload.name.c_str(), descriptionWidth,
                "peak memory of the call above the text", inMegabytes(memory.library), inMegabytes(memory.baseline),
                inMegabytes(memory.library) / inMegabytes(memory.baseline), "1 call");
    std::fflush(stdout);
}

void Table::printGrowth(const std::string &name, double sizeRatio) const
{
    const auto small = m_medians.find(name + "-small");
    const auto large = m_medians.find(name + "-large");
    if (small == m_medians.end() || large == m_medians.end())
        return;
    std::printf("%s: with %.0f times as many events, each takes %.2f times as long (baseline: %.2f)\n", name.c_str(),
                sizeRatio, large->second.library / small->second.library / sizeRatio,
                large->second.baseline / small->second.baseline / sizeRatio);
}

} // namespace bench
