#include "databasefile.h"
#include "exports.h"
#include "failures.h"

#include <algorithm>
#include <random>
#include <sstream>

namespace client {

namespace {

using Records = std::vector<std::string>;

/// Each record of an answer, which must not have spaces in its texts.
Records recordsOf(const std::string &answer)
{
    std::istringstream words(answer);
    Records records(std::istream_iterator<std::string>(words), {});
    EXPECT_EQ(records.at(0), "0");
    records.erase(records.begin());
    return records;
}

/// Events with identifiers in no order, some of them twice, of devices, sections, zones and operators that may not be
/// stored.
std::string makeEvents(std::mt19937 &random, unsigned int count)
{
    constexpr std::tuple<const char *, int, int> numbers[] = {
        {"time", 0, 50}, {"device", -5, 35}, {"section", 0, 5}, {"zone", 0, 9}, {"operator_id", 0, 12}};
    constexpr const char *texts[] = {"}", R"(,"data":""})", R"(,"data":"motion"})", R"(,"jdata":"дверь🚪"})"};
    std::string events;
    for (unsigned int i = 0; i < count; ++i) {
        events += R"({"id":)" + std::to_string(random() % (count + count / 3));
        for (const auto &[key, first, end] : numbers) {
            const int value = first + static_cast<int>(random() % static_cast<unsigned>((end - first) * 9 / 8 + 1));
            if (value < end)
                events.append(",\"").append(key).append("\":").append(std::to_string(value));
        }
        events.append(texts[random() % std::size(texts)]).append(",");
    }
    return events;
}

void addWhatEventsBorrowFrom()
{
    constexpr const char *named = R"("sections":[{"id":1,"name":"s#","zones":[{"id":2,"name":"z#"},{"id":3}]}]})";
    constexpr const char *unnamed = R"("sections":[{"id":0,"name":"","zones":[{"id":0,"name":""}]},{"id":2}]})";
    const std::pair<const char *, std::string> requests[] = {
        {"addDevices", items(std::string(R"({"id":#,"account":1#,)") + named, 0, 14)},
        {"addDevices", items(std::string(R"({"id":#,)") + unnamed, 15, 29)},
        {"addUsers", items(R"({"id":#,"domain":#})", 0, 6)},
        {"addUsers", items(R"({"id":#})", 7, 9)},
        {"addDomains", items(R"({"id":#,"name":"d#"})", 0, 3)},
        {"addDomains", items(R"({"id":#})", 4, 4)}};
    for (const auto &[name, request] : requests)
        ASSERT_EQ(call(name, {request}), "0");
}

} // namespace

/// Names are looked up for many events and joined for few, and what was given is answered unless SQLite changed it.
TEST(Events, areTheSameWhateverTheWayToThem)
{
    for (unsigned int seed = 1; seed <= 5; ++seed) {
        SCOPED_TRACE(seed);
        const TemporaryDirectory directory;
        const RunningCache cache;
        addWhatEventsBorrowFrom();
        std::mt19937 random(seed);
        // None, or one that does not come back as it was given.
        constexpr const char *oddTexts[] = {"", "a\\uffffb", "\\ufeffa", "a\\ud800", "\\udc00z"};
        const std::string sent = makeEvents(random, seed == 1 ? setting("TARNEL_EVENTS", 60000) : 6000) +
                                 R"({"id":200000,"time":7,"device":3,"jdata":")" + oddTexts[seed % 5] + "\"}";
        Records answered = recordsOf(call("addEvents", {items(sent)}));
        // An event of no device, whose text is changed by the storage, makes the answer one that is read back.
        EXPECT_TRUE(recordsOf(call("addEvents", {items(sent + R"(,{"id":200001,"data":"\ufeff"})")})) == answered);

        const Records lookedUp = recordsOf(call("getEvents", {0, 100}));
        Records joined;
        for (int time = 0; time < 50; ++time)
            std::ranges::copy(recordsOf(call("getEvents", {time, time})), std::back_inserter(joined));
        std::ranges::sort(joined);
        EXPECT_GT(lookedUp.size(), 2000U);
        EXPECT_TRUE(lookedUp == joined);
        std::erase_if(answered, [](const std::string &event) { return event.find("|-|") == event.find('|'); });
        EXPECT_TRUE(lookedUp == answered);
    }
}

/// Also for events that have no zone to be looked up.
TEST(Events, cannotBeReadWithoutTheTablesOfTheirNames)
{
    for (const unsigned int count : {3U, 3000U}) {
        const TemporaryDirectory directory;
        const RunningCache cache;
        EXPECT_EQ(call("addDevices", {items(R"({"id":1})")}), "0");
        EXPECT_EQ(call("addEvents", {items(R"({"id":#,"time":1,"device":1})", 1, count)})[0], '0');
        ask("DROP TABLE Zones");
        takeLog();
        EXPECT_EQ(call("getEvents", {0, 100}), "7");
        expectLogOf(stepsOf("getEvents"), "no such table: Zones Unable to execute statement");
    }
}

} // namespace client
