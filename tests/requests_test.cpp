#include "kinds.h"

#include <gtest/gtest.h>

/// Requests as the library reads them: one table of texts, codes and what is stored.
namespace client {

namespace {

struct Request {
    Text text;
    std::string code;
    std::string stored; ///< What a read of everything then answers.
};

void expectReadOf(const char *table, const std::vector<Request> &requests)
{
    for (std::size_t i = 0; i < requests.size(); ++i) {
        SCOPED_TRACE(std::string(table) + " " + std::to_string(i) + ": " + utf8(requests[i].text.units()));
        const TemporaryDirectory directory;
        const RunningCache cache;
        EXPECT_EQ(kind(table).add(requests[i].text), requests[i].code);
        EXPECT_EQ(kind(table).getAll(), requests[i].stored);
    }
}

Request one(const std::string &record, const std::string &stored)
{
    return {items(record), stored == "5" ? "5" : "0", stored == "5" ? "8" : "0 " + stored};
}

} // namespace

TEST(Requests, areReadWholeOrNotAtAll)
{
    const std::string deep(2000, '[');
    const std::string deepEnd(2000, ']');
    expectReadOf("Locales", {
                                {"", "10", "8"},
                                {"[1,2]", "10", "8"},
                                {"7", "10", "8"},
                                {R"({"D":{"items":[{"id":1}]})", "10", "8"},
                                {R"({"D":{"items":[{"id":1}]}} x)", "10", "8"},
                                {items(R"({"id":1,"x":)" + deep + deepEnd + "}"), "10", "8"},
                                {Text(std::u16string(u"{\"D\":{\"items\":[{\"id\":1}]}}\0", 27)), "10", "8"},
                                {"{}", "5", "8"},
                                {R"({"items":[{"id":1}]})", "5", "8"},
                                {R"({"d":{"items":[{"id":1}]}})", "5", "8"},
                                {R"({"D":[{"id":1}]})", "5", "8"},
                                {R"({"D":null})", "5", "8"},
                                {R"({"D":{}})", "5", "8"},
                                {R"({"D":{"items":{}}})", "5", "8"},
                                {R"({"D":{"items":[]}})", "10", "8"},
                                {items("7"), "5", "8"},
                                {items(R"({"id":1},{"id":2},{"iso":"ru"})"), "5", "8"},
                                {items(R"({"id":1},{"id":2},[])"), "5", "8"},
                                {items(R"({"id":1},{"id":2},{"id":3})"), "0", "0 1|-|- 2|-|- 3|-|-"},
                                {items(R"({"id":1,"iso":"ru"},{"id":1,"description":"x"})"), "0", "0 1|-|x"},
                                {Text(u"\uFEFF{\"D\":{\"items\":[{\"id\":1}]}}"), "0", "0 1|-|-"},
                                one(R"({"id":1,"unknown":{"iso":null}})", "1|-|-"),
                                one(R"({"id":null})", "5"),
                                one(R"({"id":"7"})", "5"),
                                one(R"({"ID":7})", "5"),
                                one(R"({"id":1,"iso":null})", "5"),
                                one(R"({"id":1,"iso":7})", "5"),
                                one(R"({"id":1,"description":[]})", "5"),
                                one(R"({"id":1,"iso":""})", "1|''|-"),
                                one(R"({"id":1,"iso":"\ud834\udd1e","description":"𝄞日本"})", "1|𝄞|𝄞日本"),
                                one(R"({"id":1,"iso":"a\u0000b"})", "1|a|-"),
                            });
}

TEST(Requests, numbersAreCutToTheirLow32Bits)
{
    for (const auto &[number, stored] : std::vector<std::pair<std::string, std::string>>{
             {"-1", "4294967295"},
             {"1.9", "1"},
             {"-1.9", "4294967295"},
             {"4294967295", "4294967295"},
             {"4294967296", "0"},
             {"4294967301", "5"},
             {"1e300", "0"},
             {"-1e300", "0"},
             {"1e19", "0"},
             {"9223372036854775807", "0"},
         }) {
        expectReadOf("Domains",
                     {one(R"({"id":)" + number + R"(,"org_id":)" + number + R"(,"locale_id":)" + number + "}",
                          stored + "|-|" + stored + "|(" + stored + "|-|-)")});
    }
    expectReadOf("Domains", {one(R"({"id":1,"org_id":"1"})", "5"), one(R"({"id":1,"org_id":true})", "5"),
                             one(R"({"id":1,"locale_id":{"id":1}})", "5"), one(R"({"id":1,"locale_id":null})", "5")});
}

TEST(Requests, rolesAre64Bits)
{
    for (const auto &[number, stored] : std::vector<std::pair<std::string, std::string>>{
             {"0", "0"},
             {"3.9", "3"},
             {"9007199254740992", "9007199254740992"},
             {"9223372036854775808", "9223372036854775808"},
             {"1e19", "10000000000000000000"},
             {"1e300", "0"},
         }) {
        expectReadOf("Users", {one(R"({"id":1,"roles":)" + number + "}", "1|-|-|-|-|-|-|" + stored + "|-|-")});
    }
    expectReadOf("Users", {one(R"({"id":1,"roles":"3"})", "5"), one(R"({"id":1,"roles":null})", "5")});
}

TEST(Requests, jsonTrueIsStoredAsFalse)
{
    for (const auto &[value, stored] : std::vector<std::pair<std::string, std::string>>{
             {"true", "0"}, {"false", "0"}, {"1", "1"}, {"0", "0"}, {"-2", "1"}, {"0.5", "0"}, {"4294967296", "0"}}) {
        expectReadOf("Users", {one(R"({"id":1,"active":)" + value + "}", "1|-|-|-|" + stored + "|-|-|-|-|-")});
    }
    expectReadOf("Users", {one(R"({"id":1,"active":"1"})", "5"), one(R"({"id":1,"active":null})", "5")});
}

TEST(Requests, loneSurrogatesReadTheSameOnEveryPath)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    const std::vector<Text> texts{
        items(R"({"id":1,"name":"x\ud800x","org_id":1})"), items(R"({"id":1,"name":"\udc00","org_id":1})"),
        Text(u"{\"D\":{\"items\":[{\"id\":1,\"name\":\"" + std::u16string{0xd800} + u"\",\"org_id\":1}]}}")};
    for (const Text &text : texts) {
        const Kind &domain = kind("Domains");
        EXPECT_EQ(domain.add(text), "0");
        const std::string answer = domain.get(1);
        EXPECT_EQ(answer.substr(0, 4), "0 1|");
        EXPECT_EQ(domain.getAll(), answer);
        EXPECT_EQ(domain.getWithParams("org_id", "1"), answer);
    }
}

TEST(Requests, updatesAreReadAsTheObjectItself)
{
    for (const Kind &kind : kinds()) {
        if (!kind.update)
            continue;
        SCOPED_TRACE(kind.table);
        const TemporaryDirectory directory;
        const RunningCache cache;
        EXPECT_EQ(kind.update("[]"), "10");
        EXPECT_EQ(kind.update("{}"), "5");
        EXPECT_EQ(kind.update(R"({"D":[]})"), "5");
        EXPECT_EQ(kind.update(item("{}")), "5");
        EXPECT_EQ(kind.update(item(R"({"id":null})")), "5");
        EXPECT_EQ(kind.update(items(kind.record)), "5");
        EXPECT_EQ(kind.update(item(R"({")" + kind.deleteKey + R"(":1})")), "5") << "a delete key is no identifier";
        EXPECT_EQ(kind.getAll(), "8");
        EXPECT_EQ(kind.update(item(kind.record)), "0 " + kind.read) << "what is not stored yet is stored";
    }
}

TEST(Requests, deletesNameTheIdentifierUnderTheKeyOfTheKind)
{
    for (const Kind &kind : kinds()) {
        if (!kind.deleteItem)
            continue;
        SCOPED_TRACE(kind.table);
        const TemporaryDirectory directory;
        const RunningCache cache;
        EXPECT_EQ(kind.add(items(kind.record)), "0");
        EXPECT_EQ(kind.deleteItem("[]"), "10");
        EXPECT_EQ(kind.deleteItem(R"({"D":1})"), "5");
        EXPECT_EQ(kind.deleteItem(R"({"D":{"id":1}})"), "5");
        EXPECT_EQ(kind.deleteItem(kind.deleteRequest(2)), "8");
        EXPECT_EQ(kind.getAll(), "0 " + kind.read);
        EXPECT_EQ(kind.deleteItem(kind.deleteRequest(1)), "0");
        EXPECT_EQ(kind.deleteItem(kind.deleteRequest(1)), "8");
        EXPECT_EQ(kind.getAll(), "8");
    }
}

TEST(Requests, deleteKeyOfWrongTypeReadsAsZero)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    for (const Kind &kind : kinds()) {
        for (const char *value : {R"("7")", "null", "true", "{}", "0.9"}) {
            if (!kind.deleteItem)
                continue;
            SCOPED_TRACE(kind.table + value);
            const std::string request = R"({"D":{")" + kind.deleteKey + R"(":)" + value + "}}";
            EXPECT_EQ(kind.deleteItem(request), "8");
            EXPECT_EQ(kind.add(items(R"({"id":0},{"id":7})")), "0");
            EXPECT_EQ(kind.deleteItem(request), "0");
            EXPECT_EQ(kind.get(0), "8");
            EXPECT_EQ(kind.get(7).substr(0, 3), "0 7");
        }
    }
}

} // namespace client
