#include "bench/table.h"

#include "bench/statistics.h"

#include <array>
#include <cstdio>

namespace bench {

namespace {

constexpr int nameWidth = 14;
constexpr int descriptionWidth = 68;

/// A figure in its unit; a dash for none.
std::string shown(const std::optional<double> &figure, const Unit &unit)
{
    if (!figure)
        return "-";
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.*f %s", unit.decimals, *figure * unit.factor, unit.name);
    return text.data();
}

void printLine(const std::string &name, const std::string &description, const std::string &first,
               const std::string &second, const std::string &ratio, const std::string &remark)
{
    std::printf("| %-*s | %-*s | %12s | %12s | %5s | %-17s |\n", nameWidth, name.c_str(), descriptionWidth,
                description.c_str(), first.c_str(), second.c_str(), ratio.c_str(), remark.c_str());
    std::fflush(stdout);
}

void printRule()
{
    std::printf("|---|---|---|---|---|---|\n");
}

/// A dash where there is nothing to compare with.
std::string ratioText(double figure, double measure = 1)
{
    if (measure == 0)
        return "-";
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f", figure / measure);
    return text.data();
}

} // namespace

void Table::printHeader()
{
    printLine("", "workload", librarySide, baselineSide, "ratio", "spread");
    printRule();
}

void Table::printRow(const Workload &workload, const Measurement &measurement, const char *turns)
{
    std::vector<double> ratios;
    for (std::size_t i = 0; i < measurement.library.size(); ++i)
        ratios.push_back(measurement.library[i] / measurement.baseline[i]);
    const auto [lowest, highest] = std::minmax_element(ratios.begin(), ratios.end());
    const Medians medians{median(measurement.library), median(measurement.baseline)};
    m_medians[workload.name] = medians;
    m_isValid = m_isValid && measurement.isSame;
    const std::string spread =
        ratioText(*lowest) + "-" + ratioText(*highest) + ", " + std::to_string(ratios.size()) + " " + turns;
    printLine(workload.name, workload.description, shown(medians.library, units::milliseconds),
              shown(medians.baseline, units::milliseconds), measurement.isSame ? ratioText(median(ratios)) : "void",
              measurement.isSame ? spread : "the results differ");
}

void Table::printCosts(const Workload &workload, const Costs &costs)
{
    m_isValid = m_isValid && costs.isSame();
    const auto print = [&](const char *description, double library, double baseline, const Unit &unit,
                           const char *remark) {
        printLine(workload.name, description, shown(library, unit), shown(baseline, unit),
                  costs.isSame() ? ratioText(library, baseline) : "void",
                  costs.isSame() ? remark : "the results differ");
    };
    print("peak memory of the call above what was there", static_cast<double>(costs.library.bytes),
          static_cast<double>(costs.baseline.bytes), units::megabytes, "1 call");
    if (!workload.isWriting)
        print("page faults of a call, call after call", costs.library.faults, costs.baseline.faults, units::pages,
              "5 calls");
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

void Table::printTogetherHeader()
{
    std::printf("\n");
    printLine("", "the library alone, on several threads", "together", "apart", "ratio", "");
    printRule();
}

void Table::printTogether(const std::string &name, const TogetherRow &row)
{
    m_isValid = m_isValid && row.isSame;
    const std::string ratio = ratioText(row.together, row.apart.value_or(0));
    printLine(name, row.description, shown(row.together, row.unit), shown(row.apart, row.unit),
              row.isSame ? ratio : "void", row.isSame ? row.remark : "the results differ");
}

} // namespace bench
