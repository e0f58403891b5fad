#include "databasefile.h"
#include "exports.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <iostream>
#include <optional>

/// Records leaving the file, and the rules of the arguments. What becomes of records over many calls is the model
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
