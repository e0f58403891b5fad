#pragma once

#include "tools/tarnel/output.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tool {

class CacheFile;

/// How bad a finding is. Notes are no fault: they say what a client shows differently from what one may expect.
enum class Severity { Note, Suspicious, Broken };

[[nodiscard]] std::string_view nameOf(Severity severity);

/// Something that a check has found.
struct Finding {
    Severity severity;
    std::string subject; ///< A table, a column, or "file".
    std::string what;    ///< In words.
    std::uint64_t count = 1;
    std::vector<std::string> examples = {}; ///< Identifiers of some of the rows, those of enclosing records first.
};

[[nodiscard]] output::Json toJson(const Finding &finding);

/// Looks for all that is wrong or odd, the worst first. `onStep` is told what is being done.
[[nodiscard]] std::vector<Finding> check(CacheFile &cache, const std::function<void(std::string_view)> &onStep);

/// The worst of findings.
[[nodiscard]] Severity worstOf(const std::vector<Finding> &findings);

} // namespace tool
