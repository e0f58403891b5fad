#include "kinds.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

/// Records on their way in and out, and the rules of the arguments.
namespace client {

TEST(Records, comeBackAsTheyWentIn)
{
    const TemporaryDirectory directory;
    for (const Kind &kind : kinds()) {
        SCOPED_TRACE(kind.table);
        {
            const RunningCache cache;
            EXPECT_EQ(kind.get(1), "8");
            EXPECT_EQ(kind.getAll(), "8");
            EXPECT_EQ(kind.add(items(kind.record + R"(,{"id":4294967295})")), "0");
        }
        const RunningCache cache;
        EXPECT_EQ(kind.get(1), "0 " + kind.read);
        EXPECT_EQ(kind.getAll().substr(0, kind.read.size() + 14), "0 " + kind.read + " 4294967295|");
        EXPECT_EQ(kind.get(2), "8");
        if (kind.deleteItem) {
            EXPECT_EQ(kind.deleteItem(kind.deleteRequest(1)), "0"); // Nothing of it is left for the kinds that follow.
            EXPECT_EQ(kind.get(1), "8");
        } else {
            std::filesystem::remove("CacheDb");
        }
    }
}

TEST(Records, addReplacesWholeUpdateKeepsTheRest)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    const Kind &user = kind("Users");
    EXPECT_EQ(user.add(items(user.record)), "0");
    EXPECT_EQ(user.update(item(R"({"id":1,"login":"p","active":0,"roles":0})")), "0 1|Ωμέγα|p|𝄞|0|8|9|0|-|4294967295");
    EXPECT_EQ(user.update(item(R"({"id":1})")), "0 1|Ωμέγα|p|𝄞|0|8|9|0|-|4294967295");
    EXPECT_EQ(user.add(items(R"({"id":1,"name":"n"})")), "0");
    EXPECT_EQ(user.get(1), "0 1|n|-|-|-|-|-|-|-|-");

    const Kind &domain = kind("Domains");
    EXPECT_EQ(domain.add(items(domain.record)), "0");
    EXPECT_EQ(domain.update(item(R"({"id":1,"name":""})")), "0 1|''|4294967295|(7|-|-)");
    EXPECT_EQ(domain.update(item(R"({"id":1,"locale_id":6})")), "0 1|''|4294967295|(6|-|-)");
    EXPECT_EQ(domain.add(items(R"({"id":1})")), "0");
    EXPECT_EQ(domain.get(1), "0 1|-|-|-");
}

TEST(Records, domainWithUncachedLocaleHasItsIdentifierAlone)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    EXPECT_EQ(kind("Domains").add(items(R"({"id":1,"locale_id":7},{"id":2},{"id":3,"locale_id":8})")), "0");
    EXPECT_EQ(kind("Locales").add(items(R"({"id":8,"iso":"en"})")), "0");
    EXPECT_EQ(kind("Domains").getAll(), "0 1|-|-|(7|-|-) 2|-|-|- 3|-|-|(8|en|-)");
    EXPECT_EQ(kind("Domains").getWithParams("locale_id", "8"), "0 3|-|-|(8|en|-)");
}

TEST(Records, userWithUncachedDomainHasNone)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    EXPECT_EQ(kind("Users").add(items(R"({"id":1,"domain":5},{"id":2,"domain":6},{"id":3})")), "0");
    EXPECT_EQ(kind("Domains").add(items(R"({"id":6,"name":"d","locale_id":7})")), "0");
    const std::string second = "2|-|-|-|-|6|-|-|(6|d|-|(7|-|-))|-";
    EXPECT_EQ(kind("Users").getAll(), "0 1|-|-|-|-|5|-|-|-|- " + second + " 3|-|-|-|-|-|-|-|-|-");
    EXPECT_EQ(kind("Users").update(item(R"({"id":2})")), "0 " + second);
    EXPECT_EQ(kind("Domains").deleteItem(kind("Domains").deleteRequest(6)), "0");
    EXPECT_EQ(kind("Users").get(2), "0 2|-|-|-|-|6|-|-|-|-") << "who names a deleted domain stays as it is";
}

TEST(Filters, findByEveryKeyAndByNoOther)
{
    for (const Kind &kind : kinds()) {
        const TemporaryDirectory directory;
        const RunningCache cache;
        EXPECT_EQ(kind.getWithParams("nonsense", "1"), "10") << "also while the table is empty";
        EXPECT_EQ(kind.add(items(kind.record + R"(,{"id":2})")), "0");
        for (const auto &[key, value] : kind.filters) {
            SCOPED_TRACE(kind.table + " " + key);
            EXPECT_EQ(kind.getWithParams(key, value), "0 " + kind.read);
            EXPECT_EQ(kind.getWithParams(key, value + "1"), "8");
            EXPECT_EQ(kind.getWithParams(key, ""), "8") << "an absent value is not an empty one";
            std::string otherCase = key;
            otherCase[0] = static_cast<char>(std::toupper(otherCase[0]));
            for (const std::string &unknown : {otherCase, key + " ", key.substr(0, key.size() - 1)})
                EXPECT_EQ(kind.getWithParams(unknown, value), "10");
        }
        for (const std::string &unknown : {std::string(), kind.table + "Id", std::string("1=1 OR id")})
            EXPECT_EQ(kind.getWithParams(unknown, "1"), "10");
        EXPECT_EQ(kind.getWithParams("id", "1 OR 1=1"), "8");
    }
}

TEST(Filters, compareNumbersAsNumbersAndTextsExactly)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    EXPECT_EQ(
        kind("Users").add(items(R"({"id":5,"name":"5","roles":9223372036854775808,"phone":5},{"id":6,"name":""})")),
        "0");
    for (const auto &[key, value] : std::vector<std::pair<std::string, std::string>>{
             {"phone", "5"}, {"phone", "5.0"}, {"id", "05"}, {"roles", "9223372036854775808"}, {"name", "5"}})
        EXPECT_EQ(kind("Users").getWithParams(key, value).substr(0, 4), "0 5|") << key << value;
    EXPECT_EQ(kind("Users").getWithParams("name", "").substr(0, 4), "0 6|");
    EXPECT_EQ(kind("Users").getWithParams("name", "05"), "8");
}

TEST(Arguments, outputsMustBeThereAndNull)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    const auto expectRefusals = []<class Api>(const Functions<Api> &functions) {
        const Text record = items(R"({"id":1})");
        const Text update = item(R"({"id":1})");
        const Text field = "id";
        ASSERT_EQ(functions.add(record.units(), record.length()), 0U);
        Api held{};
        unsigned int count = 4711;
        for (Api *occupied : {&held, static_cast<Api *>(nullptr)}) {
            Api **out = occupied == nullptr ? nullptr : &occupied;
            EXPECT_EQ(functions.get(out, 1), 10U);
            EXPECT_EQ(functions.getAll(out, &count), 10U);
            EXPECT_EQ(functions.getWithParams(out, &count, field.units(), 2, field.units(), 2), 10U);
            if (functions.update != nullptr) {
                EXPECT_EQ(functions.update(out, update.units(), update.length()), 10U);
            }
            EXPECT_TRUE(occupied == nullptr || occupied == &held);
        }
        Api *out = nullptr;
        EXPECT_EQ(functions.getAll(&out, nullptr), 10U);
        EXPECT_EQ(functions.getWithParams(&out, nullptr, field.units(), 2, field.units(), 2), 10U);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(count, 4711U);
    };
    std::apply([&](const auto &...functions) { (expectRefusals(functions), ...); }, allFunctions);
}

TEST(Arguments, textsMustBeThereAndNotTooLong)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    const auto expectRefusals = []<class Api>(const Functions<Api> &functions) {
        const Text field = "id";
        Api *out = nullptr;
        unsigned int count = 4711;
        for (const auto &[units, length] : std::vector<std::pair<Units, unsigned int>>{
                 {nullptr, 0}, {nullptr, 1}, {field.units(), 0x80000000U}, {field.units(), 0xffffffffU}}) {
            EXPECT_EQ(functions.add(units, length), 10U);
            if (functions.update != nullptr) {
                EXPECT_EQ(functions.update(&out, units, length), 10U);
            }
            if (functions.deleteItem != nullptr) {
                EXPECT_EQ(functions.deleteItem(units, length), 10U);
            }
            EXPECT_EQ(functions.getWithParams(&out, &count, units, length, field.units(), 2), 10U);
            EXPECT_EQ(functions.getWithParams(&out, &count, field.units(), 2, units, length), length == 0 ? 8U : 10U);
        }
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(count, 4711U);
    };
    std::apply([&](const auto &...functions) { (expectRefusals(functions), ...); }, allFunctions);
}

TEST(Arguments, freeFunctionsRefuseNullAndACountOfZero)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    const auto expectRefusals = []<class Api>(const Functions<Api> &functions) {
        const Text record = items(R"({"id":1},{"id":2})");
        Api *structures = nullptr;
        unsigned int count = 0;
        ASSERT_EQ(functions.add(record.units(), record.length()), 0U);
        ASSERT_EQ(functions.getAll(&structures, &count), 0U);
        EXPECT_EQ(count, 2U);
        EXPECT_EQ(functions.freeOne(nullptr), 10U);
        EXPECT_EQ(functions.freeArray(nullptr, 2), 10U);
        EXPECT_EQ(functions.freeArray(structures, 0), 10U);
        EXPECT_EQ(structures[0].id + structures[1].id, 3U) << "the refused block is still the caller's";
        EXPECT_EQ(functions.freeArray(structures, count), 0U);
    };
    std::apply([&](const auto &...functions) { (expectRefusals(functions), ...); }, allFunctions);
}

namespace {

/// The first operation that answers otherwise than with 255; empty if there is none.
std::string availableOperation()
{
    for (const Kind &kind : kinds()) {
        if (kind.add(items(kind.record)) != "255" || kind.get(1) != "255" || kind.getAll() != "255" ||
            kind.getWithParams("id", "1") != "255" || (kind.update && kind.update(item(kind.record)) != "255") ||
            (kind.deleteItem && kind.deleteItem(kind.deleteRequest(1)) != "255"))
            return kind.table;
    }
    return getState() == TARNEL_STATE_NONE && getLaunchCacheResult() == 255 ? "" : "state";
}

} // namespace

TEST(Availability, withoutARunningCacheEverythingIs255)
{
    const TemporaryDirectory directory;
    EXPECT_EQ(availableOperation(), "");
    {
        const RunningCache cache;
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(availableOperation().empty() ? 0 : 1);
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << "in a forked child the cache is the parent's";
        EXPECT_EQ(kind("Users").add(items(R"({"id":1})")), "0");
    }
    EXPECT_EQ(availableOperation(), "");
}

} // namespace client
