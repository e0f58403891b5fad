#include "databasefile.h"
#include "exports.h"

#include <gtest/gtest.h>

/// What looks like a mistake and is relied on: one test for each.
namespace client {

/// A running cache in a directory of its own.
class Quirks : public testing::Test
{
private:
    TemporaryDirectory m_directory;
    RunningCache m_cache;
};

TEST_F(Quirks, filterByClusterIdIsRefused)
{
    EXPECT_EQ(call("addDevices", {items(R"({"id":1,"cluster_id":4,"parted":1})")}), "0");
    EXPECT_EQ(call("getDevicesWithParams", {"cluster_id", "4"}), "10");
    EXPECT_EQ(call("getDevicesWithParams", {"parted", "1"}), "0 1|-|-|-|-|-|1|4");
}

TEST_F(Quirks, addReplacesWholeUpdateKeepsTheRest)
{
    EXPECT_EQ(call("addSites", {items(R"({"id":1,"name":"n","type":2,"location":{"lat":1.5,"lon":2.5}})")}), "0");
    EXPECT_EQ(call("updateSite", {item(R"({"id":1,"name":""})")}), "0 1|''|-|-|-|-|-|-|-|2|-|-|-|-|-|(1|1.5|2.5)");
    EXPECT_EQ(call("updateSite", {item(R"({"id":1,"location":{"lat":3.5}})")}),
              "0 1|''|-|-|-|-|-|-|-|2|-|-|-|-|-|(1|3.5)");
    EXPECT_EQ(call("addSites", {items(R"({"id":1})")}), "0");
    EXPECT_EQ(call("getSite", {1}), "0 1|-|-|-|-|-|-|-|-|-|-|-|-|-|-|(1|3.5)");
}

TEST_F(Quirks, addDeviceKeepsWhatItDoesNotName)
{
    EXPECT_EQ(call("addDevices", {items(R"({"id":1,"account":2,"sections":[{"id":1,"zones":[{"id":1}]},{"id":2}],)"
                                        R"("users":[{"user_index":3,"sections":[1,2]}]})")}),
              "0");
    EXPECT_EQ(call("addDevice", {item(R"({"id":1,"sections":[{"id":2,"name":"n"}],"users":[{"user_index":3}]})")}),
              "0 1|-|-|-|[(1|-|-|[(1)]) (2|n)]|[(3|-|-|-|[1 2])]");
}

TEST_F(Quirks, zoneNumberIsUniqueInItsDevice)
{
    EXPECT_EQ(call("addDevices",
                   {items(R"({"id":1,"sections":[{"id":1,"zones":[{"id":5,"name":"a"}]},)"
                          R"({"id":2,"zones":[{"id":5}]}]},{"id":2,"sections":[{"id":1,"zones":[{"id":5}]}]})")}),
              "0");
    EXPECT_EQ(ask("SELECT ZonesDeviceId, ZonesSectionId, ZonesName FROM Zones"), "1|2|NULL\n2|1|NULL\n");
}

TEST_F(Quirks, zoneUpdateMovesToAnotherSection)
{
    EXPECT_EQ(call("addDevices", {items(R"({"id":1,"sections":[{"id":1,"zones":[{"id":5,"name":"n"}]},{"id":2}]})")}),
              "0");
    EXPECT_EQ(call("updateZone", {item(R"({"device":1,"section":2,"zone":5,"arm":3})")}), "0 5|n|-|-|-|-|-|-|-|-|3");
    EXPECT_EQ(call("getZonesForSection", {1, 1}), "8");
    EXPECT_EQ(call("getZonesForSection", {1, 2}), "0 5|n|-|-|-|-|-|-|-|-|3");
    EXPECT_EQ(call("deleteZone", {item(R"({"device":1,"section":1,"zone":5})")}), "8") << "it is not there any more";
}

TEST_F(Quirks, updateIsStoredWhenParentIsMissing)
{
    EXPECT_EQ(call("updateSection", {item(R"({"device":1,"id":2,"name":"n"})")}), "11");
    EXPECT_EQ(call("getSection", {1, 2}), "0 2|n");
    EXPECT_EQ(call("updateZone", {item(R"({"device":1,"section":3,"id":4})")}), "11") << "no such section";
    EXPECT_EQ(call("updateZone", {item(R"({"device":1,"section":2,"id":5})")}), "11") << "no such device";
    EXPECT_EQ(call("getZones", {1}), "0 4 5");
}

TEST_F(Quirks, updateDeviceFwWithoutVersionEmptiesIt)
{
    EXPECT_EQ(call("addDevices", {items(R"({"id":1,"account":2,"config_version":3})")}), "0");
    EXPECT_EQ(call("updateDeviceFw", {item(R"({"id":1,"account":9,"config_version":4})")}), "0 1|2|-|4");
    EXPECT_EQ(call("updateDeviceFw", {item(R"({"id":1})")}), "0 1|2");
    EXPECT_EQ(call("updateDeviceFw", {item(R"({"id":2,"config_version":4})")}), "8");
}

TEST_F(Quirks, siteDevicesAreNotReadBack)
{
    EXPECT_EQ(call("addSites", {items(R"({"id":1,"devices":[{"id":2}]})")}), "0");
    EXPECT_EQ(call("getSite", {1}), "0 1");
    EXPECT_EQ(call("getDevice", {2}), "0 2");
    EXPECT_EQ(call("updateSite", {item(R"({"id":1,"devices":[{"id":3}]})")}), "0 1");
    EXPECT_EQ(call("getDevice", {3}), "8") << "an update does not store them either";
}

TEST_F(Quirks, addEventReturnsEventOfUnknownDevice)
{
    EXPECT_EQ(call("addEvent", {item(R"({"id":1,"time":5,"device":9})")}), "0 1|5|9");
    EXPECT_EQ(call("getEvents", {0, 9}), "8");
}

TEST_F(Quirks, addEventsReturnsOnlyEventsOfKnownDevices)
{
    EXPECT_EQ(call("addDevices", {items(R"({"id":1,"account":7})")}), "0");
    EXPECT_EQ(call("addEvents", {items(R"({"id":1,"device":9},{"id":2,"device":1},{"id":3})")}),
              "0 2|-|1|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|7");
    EXPECT_EQ(call("addEvents", {items(R"({"id":4,"device":9})")}), "8");
    EXPECT_EQ(ask("SELECT count(*) FROM Events"), "4\n") << "the others are stored";
}

TEST_F(Quirks, pruningKeepsEventsWithoutFlag)
{
    EXPECT_EQ(call("addEvents", {items(R"({"id":1,"time":5,"affect":0},{"id":2,"time":5},{"id":3,"time":5,"affect":1},)"
                                       R"({"id":4,"affect":0},{"id":5,"time":6,"affect":0})")}),
              "8");
    EXPECT_EQ(call("clearEventsBeforeDateExceptAffects", {5}), "0");
    EXPECT_EQ(ask("SELECT EventsId FROM Events ORDER BY 1"), "2\n3\n4\n5\n");
}

TEST_F(Quirks, removeAffectFlagReplacesTheOutputPointer)
{
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

TEST_F(Quirks, organizationTakesOrgIdOnly)
{
    EXPECT_EQ(call("addOrganizations", {items(R"({"id":1})")}), "5");
    EXPECT_EQ(call("updateOrganization", {item(R"({"id":1})")}), "5");
    EXPECT_EQ(call("updateOrganization", {item(R"({"org_id":1,"kpp":"k"})")}), "0 1|-|-|-|k");
    EXPECT_EQ(call("getOrganizationsWithParams", {"id", "1"}), "10");
    EXPECT_EQ(call("deleteOrganization", {item(R"({"id":1})")}), "5");
}

TEST_F(Quirks, sharedContactGoesWithTheFirstOrganization)
{
    EXPECT_EQ(call("addOrganizations", {items(R"({"org_id":1,"contact":{"id":3}},{"org_id":2,"contact":{"id":3}})")}),
              "0");
    EXPECT_EQ(call("deleteOrganization", {item(R"({"org_id":1})")}), "0");
    EXPECT_EQ(call("getOrganization", {2}), "0 2");
    EXPECT_EQ(ask("SELECT OrganizationsContactId FROM Organizations"), "3\n") << "and it still names its contact";
}

TEST_F(Quirks, uncachedLocaleLeavesItsIdentifierToADomainAlone)
{
    EXPECT_EQ(call("addDomains", {items(R"({"id":1,"locale_id":7})")}), "0");
    EXPECT_EQ(call("getDomain", {1}), "0 1|-|-|(7)");
    EXPECT_EQ(call("addOrganizations", {items(R"({"org_id":1,"locale_id":7})")}), "0");
    EXPECT_EQ(call("getOrganization", {1}), "0 1");
    EXPECT_EQ(call("addUsers", {items(R"({"id":1,"domain":5})")}), "0");
    EXPECT_EQ(call("getUser", {1}), "0 1|-|-|-|-|5") << "the same with a domain";
}

TEST_F(Quirks, siteWithDomain0HasNone)
{
    EXPECT_EQ(call("addDomains", {items(R"({"id":0,"name":"n"})")}), "0");
    EXPECT_EQ(call("addSites", {items(R"({"id":1,"domain":0})")}), "0");
    EXPECT_EQ(call("getSite", {1}), "0 1|-|-|-|-|-|-|-|-|-|-|-|-|-|0");
}

TEST_F(Quirks, jsonTrueIsStoredAsFalse)
{
    for (const auto &[value, stored] : std::vector<std::pair<std::string, std::string>>{
             {"true", "0"}, {"false", "0"}, {"1", "1"}, {"0", "0"}, {"-2", "1"}, {"0.5", "0"}, {"4294967296", "0"}})
        EXPECT_EQ(call("updateUser", {item(R"({"id":1,"active":)" + value + "}")}), "0 1|-|-|-|" + stored);
}

TEST_F(Quirks, deleteKeyOfWrongTypeReadsAsZero)
{
    for (const std::string value : {R"("7")", "null", "true", "{}", "0.9"}) {
        EXPECT_EQ(call("deleteUser", {item(R"({"op_id":)" + value + "}")}), "8");
        EXPECT_EQ(call("addUsers", {items(R"({"id":0},{"id":7})")}), "0");
        EXPECT_EQ(call("deleteUser", {item(R"({"op_id":)" + value + "}")}), "0");
        EXPECT_EQ(call("getUsers"), "0 7");
    }
    EXPECT_EQ(call("deleteUser", {item(R"({"id":7})")}), "5") << "and another key is none";
}

TEST_F(Quirks, getServerIpIsNullForAnEmptyAddress)
{
    EXPECT_EQ(call("getServerIp"), "0 -");
    EXPECT_EQ(call("setServerIp", {"сервер:1"}), "0");
    EXPECT_EQ(call("getServerIp"), "0 сервер:1");
    EXPECT_EQ(call("setServerIp", {""}), "0");
    EXPECT_EQ(call("getServerIp"), "0 -");
    EXPECT_EQ(ask("SELECT * FROM Session"), "0|\n") << "stored as an empty text";
}

} // namespace client
