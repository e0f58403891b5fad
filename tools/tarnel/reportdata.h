#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

class CacheFile;

/// A page of so many events is ready within two seconds; of more only if they are asked for, and not without end.
constexpr std::int64_t usualEvents = 20000;
constexpr std::int64_t mostEvents = 200000;

/// Which events a report is to hold: the latest of those that lie between two times.
struct ReportChoice {
    std::int64_t last = usualEvents;
    std::optional<std::int64_t> from; ///< Of their times, both ends included.
    std::optional<std::int64_t> to;
    bool isRedacted = false; ///< What is personal is masked, as in a redacted file.
};

/// What went into a report.
struct ReportSummary {
    std::uint64_t events = 0;
    std::vector<std::string> limits; ///< What it leaves out, in sentences.
};

/// Writes the data of a report, as `tools/report/src/data.js` describes them, such that they can stand in a script
/// element. The rows are written as they are read. `onStep` is told what is being checked.
ReportSummary writeReportData(std::ostream &out, CacheFile &cache, const ReportChoice &choice,
                              const std::function<void(std::string_view)> &onStep);

} // namespace tool
