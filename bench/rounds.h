#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/// Collects the times of benchmarks that are run in rounds, each as "<workload>/library" and "<workload>/baseline",
/// and compares the two sides round by round: what slows a whole round down does not touch the ratio.
class Rounds : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;

    /// One line for each workload, with the medians over all rounds.
    void print() const;

private:
    struct Times {
        std::vector<double> library; ///< Nanoseconds, one for each round.
        std::vector<double> baseline;
    };

    std::map<std::string, Times> m_workloads;
};
