#include "api/equality.h"
#include "entities/device.h"
#include "exports.h"

namespace client {

TEST(Structures, areEqualIfAllThatTheyHoldIs)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    EXPECT_EQ(call("addDomains", {items(R"({"id":1,"name":"d"},{"id":2,"name":"e"})")}), "0");
    const auto make = [](const std::string &json) {
        EXPECT_EQ(call("addDevices", {items(json)}), "0");
        api::Device *device = nullptr;
        EXPECT_EQ(getDevice(&device, json.starts_with(R"({"id":8)") ? 8 : 9), TARNEL_SUCCESS);
        EXPECT_EQ(call("deleteDevice", {item(json)}), "0");
        return device;
    };
    const std::vector<Case> cases = readCases("devices.txt");
    api::Device *const first = make(cases.at(0).lines.at(0));
    for (const Case &each : cases) {
        for (const std::string &json : each.lines) {
            api::Device *const other = make(json);
            EXPECT_EQ(api::isEqual<tarnelLib::controller::Device>(*first, *other), each.name == "equal") << json;
            freeDevice(other);
        }
    }
    freeDevice(first);
}

} // namespace client
