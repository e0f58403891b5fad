#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tool {

class CacheFile;

/// Which events a report is to hold. Without a number the newest ones, as many as a browser shows with ease.
struct ReportChoice {
    std::optional<std::int64_t> last;
    std::optional<std::int64_t> from; ///< Of their times, both ends included.
    std::optional<std::int64_t> to;
};

/// What went into a report.
struct ReportSummary {
    std::uint64_t events = 0;
    std::vector<std::string> limits; ///< What it leaves out, in sentences.
};

/// Writes the data of a report, as `tools/report/src/data.js` describes them, such that they can stand in a script
/// element. The rows are written as they are read.
ReportSummary writeReportData(std::ostream &out, CacheFile &cache, const ReportChoice &choice);

} // namespace tool
