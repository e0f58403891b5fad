#pragma once

#include "bench/rounds.h"

#include <map>

namespace bench {

/// Prints the results, each as soon as it is there.
class Table
{
public:
    static void printHeader();
    void printRow(const Workload &workload, const Measurement &measurement);
    static void printMemory(const Workload &workload, const Memory &memory);
    /// How much longer an event takes in ten, or a hundred, times as many; for what has been measured at all sizes.
    void printGrowth(const std::string &name, double sizeRatio) const;

    /// Whether both sides have answered the same in every row.
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
