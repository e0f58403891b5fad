#include "databasefile.h"
#include "exports.h"
#include "failures.h"

#include <tarnel/diagnostics.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <regex>
#include <sstream>

namespace client {

namespace {

/// How the file shows what editors do not.
const std::regex byteOrderMark(R"(\\ufeff)");

/// What a command writes.
std::string outputOf(const std::string &command)
{
    std::string output;
    FILE *const pipe = ::popen(command.c_str(), "r");
    for (int next = 0; pipe != nullptr && (next = std::fgetc(pipe)) != EOF;)
        output += static_cast<char>(next);
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return output;
}

std::string logged()
{
    std::string all;
    for (const std::string &line : takeLog())
        all += line + ";\n";
    return all;
}

std::string answerTo(const std::string &text)
{
    if (text == "log" || text[0] == '$' || std::isupper(text[0]) != 0) {
        std::string rows = text == "log" ? logged() : text[0] == '$' ? outputOf(text.substr(1)) : ask(text);
        std::ranges::replace(rows, '\n', ' ');
        return rows.substr(0, rows.find_last_not_of(' ') + 1);
    }
    if (text == "suspicions")
        return std::to_string(tarnelSuspicions());
    std::istringstream words(text);
    std::string function;
    std::vector<Argument> inputs;
    words >> function >> std::ws;
    if (function == "raw") {
        const std::size_t request = text.find(' ', 4);
        const std::string raw = text.substr(request + 1);
        return call(text.substr(4, request - 4), {raw == "''" ? "" : raw});
    }
    if (words.peek() == '{')
        return call(function, {item(text.substr(function.size() + 1))});
    for (std::string word; words >> word;) {
        if (inputs.size() >= exported(function).texts)
            inputs.emplace_back(std::stoi(word));
        else
            inputs.emplace_back(word == "''" ? "" : std::regex_replace(word, byteOrderMark, "\ufeff"));
    }
    return call(function, inputs);
}

} // namespace

class Scenarios : public testing::TestWithParam<Case>
{
};

TEST_P(Scenarios, runs)
{
    const TemporaryDirectory directory;
    takeLog();
    std::optional<RunningCache> cache(std::in_place);
    for (const std::string &line : GetParam().lines) {
        const std::size_t end = std::min(line.size(), line.find(" => "));
        const std::string text = line.substr(0, end);
        const std::string answer = end == line.size() ? "" : line.substr(end + 4);
        if (text.starts_with("relaunch")) {
            cache.reset();
            EXPECT_EQ(outputOf(text.substr(8)), "");
            cache.emplace();
            EXPECT_EQ(std::to_string(getLaunchCacheResult()), answer) << text;
        } else {
            EXPECT_EQ(answerTo(text), answer) << text;
        }
    }
}

class Reasons : public testing::TestWithParam<Case>
{
};

TEST_P(Reasons, areTold)
{
    const TemporaryDirectory directory;
    takeLog();
    takeLog(Log::Requests);
    const RunningCache cache;
    Lines warnings;
    for (std::string line : GetParam().lines) {
        for (const auto &[name, unit] : {std::pair(R"(\\n)", "\n"), {R"(\\e)", "\x1b"}, {R"(\\c)", "\u009b"}})
            line = std::regex_replace(line, std::regex(name), unit);
        if (line.starts_with("> ")) {
            EXPECT_EQ(warnings.empty() ? "nothing more" : warnings.front(), line.substr(2));
            warnings.erase(warnings.begin(), warnings.begin() + (warnings.empty() ? 0 : 1));
            continue;
        }
        EXPECT_EQ(warnings, Lines()) << "before " << line;
        const std::string text = line.substr(0, line.find(" => "));
        std::string answer = answerTo(text);
        answer.resize(std::min(answer.size(), answer.find(' ')));
        if (!answer.empty() && answer != "0" && text != "suspicions")
            answer += std::string(" ") + tarnelReason();
        EXPECT_EQ(text + " => " + answer, line);
        warnings = takeLog(Log::Requests);
    }
    EXPECT_EQ(warnings, Lines());
}

INSTANTIATE_TEST_SUITE_P(Cases, Reasons, testing::ValuesIn(readCases("reasons.txt")),
                         testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(Quirks, Scenarios, testing::ValuesIn(readCases("scenarios.txt")),
                         testing::PrintToStringParamName());

TEST(Quirks, removeAffectFlagReplacesTheOutputPointer)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    const Argument request = item(R"({"id":1})");
    EXPECT_EQ(call("addEvent", {item(R"({"id":1,"affect":1})")}).substr(0, 3), "0 1");
    // The block alone is released: what it would leak is in the leak sanitizer's eye.
    auto *event = static_cast<api::Event *>(std::calloc(1, sizeof(api::Event)));
    EXPECT_EQ(removeAffectFlag(&event, request.units(), request.length()), 0U);
    EXPECT_TRUE(event->affect != nullptr && !*event->affect);
    EXPECT_EQ(freeEvent(event), 0U);
}

} // namespace client
