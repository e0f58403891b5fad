#include "bench/options.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace bench {

namespace {

constexpr unsigned int quickDivisor = 10;
constexpr unsigned int usualStarts = 5;
constexpr unsigned int quickStarts = 2;

bool parseNumber(const std::string &text, unsigned int &number)
{
    const char *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

} // namespace

bool Options::isWanted(const std::string &workload) const
{
    return names.empty() || std::any_of(names.begin(), names.end(), [&](const std::string &name) {
               return workload.compare(0, name.size(), name) == 0 &&
                      (workload.size() == name.size() || std::isdigit(workload[name.size()]) == 0);
           });
}

std::vector<std::string> Options::argumentsFor(const Alone &ownProcess, const std::string &workload) const
{
    std::vector<std::string> arguments{"--alone", ownProcess.side, std::to_string(ownProcess.start), workload};
    if (divisor != 1)
        arguments.emplace_back("--quick");
    if (clock == Clock::Processor)
        arguments.emplace_back("--processor-time");
    if (!isMemoryCounted)
        arguments.emplace_back("--memory-not-counted");
    return arguments;
}

bool parse(int argc, char **argv, Options &options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--quick") {
            options.divisor = quickDivisor;
        } else if (argument == "--processor-time") {
            options.clock = Clock::Processor;
        } else if (argument == "--memory-not-counted") {
            options.isMemoryCounted = false;
        } else if (argument == "--starts" && i + 1 < argc) {
            if (!parseNumber(argv[++i], options.starts) || options.starts == 0)
                return false;
        } else if (argument == "--alone" && i + 2 < argc) {
            Alone &alone = options.alone.emplace(Alone{argv[i + 1], 0});
            if (!parseNumber(argv[i + 2], alone.start))
                return false;
            i += 2;
        } else if (argument.front() == 'W') {
            options.names.push_back(argument);
        } else {
            return false;
        }
    }
    if (options.starts == 0)
        options.starts = options.divisor == 1 ? usualStarts : quickStarts;
    return true;
}

} // namespace bench
