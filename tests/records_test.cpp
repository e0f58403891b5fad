#include "databasefile.h"
#include "exports.h"

#include <gtest/gtest.h>

#include <sstream>

/// Records leaving the file, and filters. What becomes of records over many calls is the model
/// test's.
namespace client {

TEST(Records, areTakenOutOfTheFileWithWhatBelongsToThem)
{
    const std::string device = "Devices Sections Zones DeviceUsers DeviceUserSectionLinks";
    const std::string records =
        "Users Domains Organizations Locales Persons Contractors Contracts Locations Sites " + device;
    for (const auto &[function, deleted] :
         std::vector<std::pair<std::string, std::string>>{{"deleteDomain", "Domains"},
                                                          {"deleteUser", "Users"},
                                                          {"deleteOrganization", "Organizations Persons"},
                                                          {"deleteContractor", "Contractors"},
                                                          {"deleteContract", "Contracts"},
                                                          {"deleteDevice", device},
                                                          {"deleteSection", "Sections Zones DeviceUserSectionLinks"},
                                                          {"deleteZone", "Zones"},
                                                          {"deleteSite", "Sites Locations"},
                                                          {"clearAllExceptEvents", records},
                                                          {"clearAll", records + " Events"}}) {
        SCOPED_TRACE(function);
        const TemporaryDirectory directory;
        const RunningCache cache;
        addOneOfEverything(1);
        const auto one = content();
        addOneOfEverything(2);
        auto both = content();
        EXPECT_EQ(call("setServerIp", {"::1"}), "0");
        EXPECT_EQ(exported(function).callWith(2), "0");
        both["Session"] = "0|::1\n";
        std::istringstream list(deleted);
        for (std::string table; list >> table;)
            both[table] = function.starts_with("clear") ? "" : one.at(table);
        EXPECT_EQ(content(), both);
    }
}

TEST(Filters, takeTheKeysOfTheKindAndNoOtherWord)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    for (const Export &function : exports()) {
        if (!function.name.ends_with("WithParams"))
            continue;
        for (const char *unknown : {"", "Id", "id ", "LocalesId", "1=1 OR id", "zones", "device", "section"}) {
            std::vector<Argument> inputs{unknown, "1"};
            inputs.resize(2 + function.parameters.size() - 6, 1);
            EXPECT_EQ(function.call(inputs), "10") << function.name << unknown;
        }
    }
    EXPECT_EQ(
        call("addUsers", {items(R"({"id":5,"name":"5","roles":9223372036854775808,"phone":5},{"id":6,"name":""})")}),
        "0");
    for (const auto &[key, value] : std::vector<std::pair<std::string, std::string>>{
             {"phone", "5"}, {"phone", "5.0"}, {"id", "05"}, {"roles", "9223372036854775808"}, {"name", "5"}})
        EXPECT_EQ(call("getUsersWithParams", {key, value}).substr(0, 4), "0 5|") << key << value;
    EXPECT_EQ(call("getUsersWithParams", {"name", ""}), "0 6|''");
    EXPECT_EQ(call("getUsersWithParams", {"name", "05"}), "8");
    EXPECT_EQ(call("getUsersWithParams", {"id", "5 OR 1=1"}), "8");
}

} // namespace client
