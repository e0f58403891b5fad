#include "exports.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <sstream>

/// What a whole centre sends at once.
namespace client {

namespace {

template <class... Parts>
std::string joined(const Parts &...parts)
{
    std::ostringstream all;
    (all << ... << parts);
    return all.str();
}

} // namespace

TEST(Sizes, devicesComeBackAsTheyWereSent)
{
    std::string request;
    std::vector<std::string> expected;
    for (unsigned int device = 1; device <= 2000; ++device) {
        std::string sections;
        std::string read;
        for (unsigned int section = 0; section < 4; ++section) {
            std::string zones;
            std::string readZones;
            for (unsigned int zone = 4 * section; zone < 4 * section + 4; ++zone) {
                const std::string name = joined("z", zone * device);
                zones += joined(zones.empty() ? "" : ",", R"({"id":)", zone, R"(,"name":")", name, "\"}");
                readZones += joined(readZones.empty() ? "(" : " (", zone, "|", name, ")");
            }
            const unsigned int id = section + device % 3;
            sections += joined(section == 0 ? "" : ",", R"({"id":)", id, R"(,"zones":[)", zones, "]}");
            read += joined(section == 0 ? "(" : " (", id, "|-|-|[", readZones, "])");
        }
        request += joined(device == 1 ? "" : ",", R"({"id":)", device, R"(,"account":7,"sections":[)", sections, "]}");
        expected.push_back(joined(" ", device, "|7|-|-|[", read, "]"));
    }
    std::ranges::sort(expected);
    std::string answer = "0";
    for (const std::string &device : expected)
        answer += device;
    const TemporaryDirectory directory;
    const RunningCache cache;
    EXPECT_EQ(call("addDevices", {items(request)}), "0");
    EXPECT_TRUE(call("getDevices") == answer);
}

TEST(Sizes, eventsOfOneCallComeBackComplete)
{
    const char *wanted = std::getenv("TARNEL_EVENTS");
    const auto size = static_cast<unsigned int>(wanted != nullptr ? std::atoi(wanted) : 60000);
    std::string records;
    for (unsigned int id = 0; id < size; ++id)
        records += joined(id == 0 ? "" : ",", R"({"id":)", id, R"(,"time":)", id % 86400,
                          R"(,"device":1,"section":1,"zone":2,"class":3,"affect":0,"data":"event )", id, "\"}");
    const Text request = items(records);
    const TemporaryDirectory directory;
    const RunningCache cache;
    EXPECT_EQ(call("addDevices", {items(R"({"id":1,"account":5})")}), "0");
    for (const bool isAdded : {true, false}) {
        api::Event *events = nullptr;
        unsigned int count = 0;
        const auto begin = std::chrono::steady_clock::now();
        ASSERT_EQ(isAdded ? addEvents(&events, &count, request.units(), request.length())
                          : getEvents(&events, &count, 0, 86400),
                  0U);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        rusage usage = {};
        ::getrusage(RUSAGE_SELF, &usage);
        std::cout << size << (isAdded ? " added in " : " read in ") << taken.count() << " s, peak "
                  << usage.ru_maxrss / 1024 << " MiB\n";
        ASSERT_EQ(count, size);
        std::vector<bool> isSeen(size);
        for (unsigned int i = 0; i < count; ++i) {
            const api::Event &event = events[i];
            isSeen.at(event.id) = *event.time == event.id % 86400 && *event.deviceAccount == 5 &&
                                  utf8(event.data) == "event " + std::to_string(event.id);
        }
        EXPECT_EQ(std::ranges::count(isSeen, true), size);
        EXPECT_EQ(freeEventsArray(events, count), 0U);
    }
}

} // namespace client
