#pragma once

#include "bench/alone.h"
#include "bench/together.h"

#include <map>

namespace bench {

/// Prints the results, each as soon as it is there.
class Table
{
public:
    static void printHeader();
    /// `turns` says what the measurement has one figure for each of, such as rounds.
    void printRow(const Workload &workload, const Measurement &measurement, const char *turns);
    /// What both sides take of memory, and of pages at each call.
    void printCosts(const Workload &workload, const Costs &costs);
    /// How much longer an event takes in ten, or a hundred, times as many; for what has been measured at all sizes.
    void printGrowth(const std::string &name, double sizeRatio) const;

    static void printTogetherHeader();
    void printTogether(const std::string &name, const TogetherRow &row);

    /// Whether both sides have answered the same in every row, and the library the same to all threads.
    [[nodiscard]] bool isValid() const { return m_isValid; }

private:
    struct Medians {
        double library;
        double baseline;
    };

    std::map<std::string, Medians> m_medians;
    bool m_isValid = true;
};

} // namespace bench
