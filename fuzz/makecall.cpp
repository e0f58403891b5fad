#include "makecall.h"

namespace fuzz {

namespace {

/// The reading of requests that is closest to what a function takes: of its kind, and of its verb if there is one.
const Reading &readingOf(std::string_view function)
{
    static const std::vector<Reading> all = oracle::readings();
    const std::string_view verb = function.starts_with("delete")   ? "delete"
                                  : function.starts_with("remove") ? "remove"
                                  : function.ends_with('s')        ? "add"
                                                                   : "update";
    const Reading *best = &all.front();
    std::size_t bestRank = 0;
    for (const Reading &reading : all) {
        const std::size_t space = reading.name.find(' ');
        const std::string kind = reading.name.substr(space + 1, reading.name.size() - space - 2);
        const bool isVerb = reading.name.starts_with(verb);
        const bool isKind = function.find(kind) != std::string_view::npos;
        const std::size_t rank = (isKind ? 2 * kind.size() : 0) + (isVerb ? 1 : 0);
        if (rank > bestRank) {
            bestRank = rank;
            best = &reading;
        }
    }
    return *best;
}

} // namespace

std::string makeCall(const Function &function, Generator &generator)
{
    std::string line(function.name);
    if (function.name == "setServerIp")
        line += "\t" + generator.filterValue();
    else if (function.texts == 1)
        line += "\t" + generator.request(readingOf(function.name),
                                         generator.oneIn(4) ? Generator::Manner::Odd : Generator::Manner::Right);
    else if (function.texts == 2)
        line += "\t" + generator.filterField(*readingOf(function.name).shape) + "\t" + generator.filterValue();
    for (std::size_t i = 0; i < function.numbers; ++i)
        line += "\t" + generator.identifier();
    return line;
}

} // namespace fuzz
