#include "databasefile.h"
#include "exports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <optional>

namespace client {

namespace {

/// Calls in a cache of their own, with the answer of each.
struct Scenario {
    std::string name;
    std::vector<std::pair<std::string, std::string>> calls;
};

std::vector<Scenario> scenarios()
{
    std::vector<Scenario> all;
    std::ifstream file(TARNEL_DATA "/scenarios.txt");
    for (std::string line; std::getline(file, line);) {
        line.erase(std::min(line.size(), line.find("   # ")));
        const std::size_t answer = line.find(" => ");
        if (line.starts_with('['))
            all.push_back({line.substr(1, line.size() - 2), {}});
        else if (answer != std::string::npos)
            all.back().calls.emplace_back(line.substr(0, answer), line.substr(answer + 4));
    }
    return all;
}

std::string answerTo(const std::string &text)
{
    if (text.starts_with("SELECT")) {
        std::string rows = ask(text);
        std::ranges::replace(rows, '\n', ' ');
        return rows.substr(0, rows.size() - 1);
    }
    std::istringstream words(text);
    std::string function;
    std::vector<Argument> inputs;
    words >> function >> std::ws;
    if (words.peek() == '{')
        return call(function, {item(text.substr(function.size() + 1))});
    for (std::string word; words >> word;) {
        const bool isNumber = std::ranges::all_of(exported(function).parameters, [](const Parameter &parameter) {
            return parameter.kind != Parameter::Kind::Text;
        });
        inputs.push_back(isNumber ? Argument(std::stoi(word)) : Argument(word == "''" ? "" : word));
    }
    return call(function, inputs);
}

} // namespace

class Scenarios : public testing::TestWithParam<Scenario>
{
};

TEST_P(Scenarios, runs)
{
    const TemporaryDirectory directory;
    std::optional<RunningCache> cache(std::in_place);
    for (const auto &[text, answer] : GetParam().calls) {
        if (text == "relaunch") {
            cache.reset();
            cache.emplace();
            EXPECT_EQ(std::to_string(getLaunchCacheResult()), answer);
        } else {
            EXPECT_EQ(answerTo(text), answer) << text;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Quirks, Scenarios, testing::ValuesIn(scenarios()),
                         [](const auto &scenario) { return scenario.param.name; });

TEST(Quirks, removeAffectFlagReplacesTheOutputPointer)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    const Text request = item(R"({"id":1})");
    api::Event *event = nullptr;
    EXPECT_EQ(removeAffectFlag(&event, request.units(), request.length()), 8U);
    EXPECT_EQ(event, nullptr);
    EXPECT_EQ(call("addEvent", {item(R"({"id":1,"affect":1})")}).substr(0, 3), "0 1");
    // The block alone is released: what it would leak is in the leak sanitizer's eye.
    event = static_cast<api::Event *>(std::calloc(1, sizeof(api::Event)));
    EXPECT_EQ(removeAffectFlag(&event, request.units(), request.length()), 0U);
    EXPECT_TRUE(event->affect != nullptr && !*event->affect);
    EXPECT_EQ(freeEvent(event), 0U);
}

} // namespace client
