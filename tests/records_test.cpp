#include "databasefile.h"
#include "exports.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <iostream>
#include <optional>

/// Records on their way in, to the file, and out. What becomes of them over many calls is the model test's.
namespace client {

namespace {

const std::string locale = "1|ru|русский";
const std::string domain = "1|北京|4294967295|(" + locale + ")";
const std::string user = "1|Ωμέγα|o|𝄞|1|1|9|9007199254740992|(" + domain + ")|4294967295";
const std::string contractor = "1|007|2|3|a|b|c";
const std::string contract = "1|a|(" + contractor + ")|b|2|3|c|d|(" + user + ")";
const std::string zone = "6|b|1|2|3|4|5|6|7|8|9";
const std::string section = "5|a|1|[(" + zone + ")]|2|3|4|5|6|7|8|9";

/// A record with every field, as JSON, and as it is handed out by a function.
struct Case {
    const char *add;
    std::string record;
    std::string get;
    std::vector<Argument> inputs;
    std::string read;
};

// In an order in which each finds what it refers to.
const std::vector<Case> &cases()
{
    static const std::vector<Case> all{
        {"addLocales", R"({"id":1,"iso":"ru","description":"русский"})", "getLocale", {1}, locale},
        {"addDomains", R"({"id":1,"name":"北京","org_id":4294967295,"locale_id":1})", "getDomain", {1}, domain},
        {"addUsers",
         R"({"id":1,"name":"Ωμέγα","login":"o","contacts":"𝄞","active":1,"domain":1,"org":9,"roles":9007199254740992,)"
         R"("phone":4294967295})",
         "getUser",
         {1},
         user},
        {"addOrganizations",
         R"({"org_id":1,"inn":"a","off_name":"b","short_name":"c","kpp":"d","ogrn":"e","address_text":"f",)"
         R"("contact":{"id":2,"name":"g","phone":"h","email":"i","postal":"j"},"locale_id":1})",
         "getOrganization",
         {1},
         "1|a|b|c|d|e|f|(2|g|h|i|j)|(" + locale + ")"},
        {"addContractors",
         R"({"id":1,"inn":"007","org_id":2,"type":3,"off_name":"a","name":"b","extra":"c"})",
         "getContractor",
         {1},
         contractor},
        {"addContracts",
         R"({"id":1,"number":"a","contractor_id":1,"c_name":"b","status":2,"date":3,"description":"c","extra":"d",)"
         R"("operator_id":1})",
         "getContract",
         {1},
         contract},
        {"addDevices",
         R"({"id":1,"account":2,"config_version":3,"parted":1,"cluster_id":4,"domain":1,"sections":[{"id":5,"name":"a",)"
         R"("schedule_id":1,"tracert":2,"flags":3,"detector":4,"arm":5,"physic":6,"form":7,"delay":8,"uid_type":9,)"
         R"("zones":[{"id":6,"name":"b","detector":1,"physic":2,"form":3,"flags":4,"delay":5,"schedule_id":6,)"
         R"("tracert":7,"uid_type":8,"arm":9}]}],)"
         R"("users":[{"user_index":7,"name":"c","comment":"d","phone":"e","sections":[5,8]}]})",
         "getDevice",
         {1},
         "1|2|(" + domain + ")|3|[(" + section + ")]|[(7|c|d|e|[5 8])]|1|4|1"},
        {"addSites",
         R"({"id":1,"name":"a","comment":"b","extra":"c","is_crossing":1,"domain":1,"address_text":"d","contract_id":1,)"
         R"("contract_status":-2,"type":3,"category":4,"arm_mode":5,"delegated":1,"site_plan":0,)"
         R"("location":{"lat":59.5,"lon":-24.25}})",
         "getSite",
         {1},
         "1|a|b|c|1|(" + domain + ")|d|(" + contract + ")|-2|3|4|5|1|-|1|(1|59.5|-24.25)|1|0"},
        {"addEvent",
         R"({"id":1,"time":2,"device":1,"section":5,"zone":6,"active":250,"class":3,"detector":4,"reason":5,)"
         R"("localtime":6,"channel":-7,"data":"a","review_id":8,"review_state":9,"operator_id":1,"is_closed":0,)"
         R"("affect":1,"jdata":"b"})",
         "getEvents",
         {2, 2},
         "1|2|1|5|6|250|3|4|5|6|-7|a|8|9|1|0|1|b|2|a|b|北京"},
    };
    return all;
}

} // namespace

TEST(Records, comeBackAsTheyWentInAfterANewLaunch)
{
    const TemporaryDirectory directory;
    {
        const RunningCache cache;
        for (const Case &one : cases()) {
            EXPECT_EQ(call(one.get, one.inputs), "8");
            const bool isAlone = std::string(one.add) == "addEvent";
            EXPECT_EQ(call(one.add, {isAlone ? item(one.record) : items(one.record)}).substr(0, 1), "0") << one.add;
        }
    }
    const RunningCache cache;
    for (const Case &one : cases()) {
        EXPECT_EQ(call(one.get, one.inputs), "0 " + one.read);
        if (one.inputs.size() == 1) {
            EXPECT_EQ(call(one.get, {2}), "8");
            EXPECT_EQ(call(one.get + "s"), "0 " + one.read);
        }
    }
    EXPECT_EQ(call("getSection", {1, 5}), "0 " + section);
    EXPECT_EQ(call("getZone", {1, 5, 6}), "0 " + zone);
    EXPECT_EQ(call("getSiteNameAndAddress", {1}), "0 a d");
    const std::map<std::string, std::string> expected{{"Users", "1|Ωμέγα|o|𝄞|1|1|9|9007199254740992|4294967295.0\n"},
                                                      {"Domains", "1|北京|4294967295|1\n"},
                                                      {"Organizations", "1|a|b|c|d|e|2|1|f\n"},
                                                      {"Locales", "1|ru|русский\n"},
                                                      {"Persons", "2|g|h|i|j\n"},
                                                      {"Contractors", "1|007|2|3|a|b|c\n"},
                                                      {"Contracts", "1|a|1|b|2|3|c|d|1\n"},
                                                      {"Zones", "1|5|6|b|1|2|3|4|5|6|7|8|9\n"},
                                                      {"Sections", "1|5|a|1|2|3|4|5|6|7|8|9\n"},
                                                      {"Devices", "1|2|1|3|1|4\n"},
                                                      {"Locations", "1|59.5|-24.25\n"},
                                                      {"Sites", "1|a|b|c|1|1|d|1|-2|3|4|5|1|0\n"},
                                                      {"DeviceUsers", "1|7|c|d|e\n"},
                                                      {"Events", "1|2|1|5|6|250|3|4|5|6|-7|a|8|9|1|0|1|b\n"},
                                                      {"DeviceUserSectionLinks", "1|7|5\n1|7|8\n"},
                                                      {"Session", ""},
                                                      {"Version", "0|0.1\n"}};
    EXPECT_EQ(content(), expected);
}

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

TEST(Arguments, mustBeThereAndOutputsNull)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    addOneOfEverything();
    const Text word = "id";
    const auto length = [](std::uintptr_t units) { return reinterpret_cast<const void *>(units); };
    for (const Export &function : exports()) {
        std::vector<const void *> arguments;
        const void *outputs[8] = {};
        for (const Parameter &parameter : function.parameters) {
            const void *const output = &outputs[arguments.size()];
            arguments.push_back(parameter.kind == Parameter::Kind::Length   ? length(2)
                                : parameter.kind == Parameter::Kind::Number ? length(1)
                                : parameter.kind == Parameter::Kind::Text   ? word.units()
                                                                            : output);
        }
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            SCOPED_TRACE(function.name + " " + function.parameters[i].name);
            auto changed = arguments;
            const Parameter::Kind kind = function.parameters[i].kind;
            // Its output may be one that was handed out before.
            const bool mayBeTaken = function.name == "removeAffectFlag";
            if (kind == Parameter::Kind::Number)
                continue;
            changed[i] = kind == Parameter::Kind::Length ? length(0x80000000U) : nullptr;
            EXPECT_EQ(function.invoke(changed), 10U);
            if ((kind == Parameter::Kind::StructureOut || kind == Parameter::Kind::TextOut) && !mayBeTaken) {
                outputs[i] = &word;
                EXPECT_EQ(function.invoke(arguments), 10U);
                EXPECT_EQ(std::exchange(outputs[i], nullptr), &word);
            }
            if (function.has(Parameter::Kind::Structure) && arguments.size() == 2) {
                EXPECT_EQ(function.invoke({&outputs, nullptr}), 10U);
            }
        }
    }
    EXPECT_EQ(getLocale(nullptr, 1), 10U);
    EXPECT_EQ(setServerIp(nullptr, 0), 0U) << "nothing of length 0 is an empty text";
}

TEST(Availability, withoutARunningCacheEverythingIs255)
{
    const TemporaryDirectory directory;
    for (const bool isLaunched : {false, true}) {
        std::optional<RunningCache> cache;
        if (isLaunched)
            cache.emplace();
        EXPECT_EXIT(
            {
                for (const Export &function : exports()) {
                    if (function.needsCache() && function.callWith(1) != "255")
                        std::cerr << function.name;
                }
                ::_exit(getState() == TARNEL_STATE_NONE && getLaunchCacheResult() == 255 ? 0 : 1);
            },
            testing::ExitedWithCode(0), "^$")
            << "in a forked child the cache is the parent's";
        EXPECT_EQ(call("getLocales"), isLaunched ? "8" : "255");
    }
}

} // namespace client
