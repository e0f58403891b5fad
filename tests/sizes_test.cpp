#include "exports.h"

#include <algorithm>
#include <numeric>

namespace client {

using Sizes = DirectoryTest;

/// What a whole centre sends at once.
TEST_F(Sizes, eventsOfOneCallComeBackComplete)
{
    std::vector<std::string> sent;
    std::vector<std::string> expected;
    for (unsigned int id = 0; id < setting("TARNEL_EVENTS", 60000); ++id) {
        const std::string number = std::to_string(id);
        sent.push_back((id == 0 ? R"({"id":)" : R"(,{"id":)") + number + R"(,"time":)" + number +
                       R"(,"device":1,"section":1,"zone":2,"class":3,"affect":0,"data":"event )" + number + "\"}");
        expected.push_back(" " + number + "|" + number + "|1|1|2|-|3|-|-|-|-|event " + number + "|-|-|-|-|0|-|5");
    }
    std::ranges::sort(expected);
    const std::string answer = std::accumulate(expected.begin(), expected.end(), std::string("0"));
    const RunningCache cache;
    EXPECT_EQ(call("addDevices", {items(R"({"id":1,"account":5})")}), "0");
    EXPECT_TRUE(call("addEvents", {items(std::accumulate(sent.begin(), sent.end(), std::string()))}) == answer);
    EXPECT_TRUE(call("getEvents", {0, ~0U}) == answer);
}

} // namespace client
