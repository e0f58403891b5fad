#include "exports.h"

#include <gtest/gtest.h>

/// Requests as the library reads them: tables of texts, codes and what is stored.
namespace client {

namespace {

struct Request {
    Text text;
    std::string code;
    std::string stored = "8"; ///< What a read of everything then answers.
};

void expectReadOf(const std::string &kinds, const std::vector<Request> &requests)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    for (std::size_t i = 0; i < requests.size(); ++i) {
        SCOPED_TRACE(kinds + " " + std::to_string(i) + ": " + utf8(requests[i].text.units()));
        EXPECT_EQ(call("add" + kinds, {requests[i].text}), requests[i].code);
        EXPECT_EQ(call("get" + kinds), requests[i].stored);
        EXPECT_EQ(call("clearAll"), "0");
    }
}

Request one(const std::string &record, const std::string &stored)
{
    return {items(record), stored == "5" ? "5" : "0", stored == "5" ? "8" : "0 " + stored};
}

} // namespace

TEST(Requests, areReadWholeOrNotAtAll)
{
    const std::string deep = std::string(2000, '[') + std::string(2000, ']');
    std::vector<Request> requests{
        {items(R"({"id":1},{"id":2},{"id":3})"), "0", "0 1 2 3"},
        {items(R"({"id":1,"iso":"ru"},{"id":1,"description":"x"})"), "0", "0 1|-|x"},
        {Text(u"\uFEFF{\"D\":{\"items\":[{\"id\":1}]}}"), "0", "0 1"},
        {Text(std::u16string(u"{\"D\":{\"items\":[{\"id\":1}]}}\0", 27)), "10"},
        one(R"({"id":1,"unknown":{"iso":null}})", "1"),
        one(R"({"id":1,"iso":"\ud834\udd1e","description":"𝄞日本"})", "1|𝄞|𝄞日本"),
        one(R"({"id":1,"iso":"a\u0000b"})", "1|a"),
    };
    for (const std::string &text :
         {std::string(), std::string("[1,2]"), std::string("7"), std::string(R"({"D":{"items":[{"id":1}]})"),
          R"({"D":{"items":[]}})" + std::string(), items(R"({"id":1})") + " x", items(R"({"id":1,"x":)" + deep + "}")})
        requests.push_back({text, "10"});
    for (const char *text : {"{}", R"({"items":[{"id":1}]})", R"({"d":{"items":[{"id":1}]}})", R"({"D":[{"id":1}]})",
                             R"({"D":null})", R"({"D":{}})", R"({"D":{"items":{}}})"})
        requests.push_back({text, "5"});
    for (const char *records :
         {"7", R"({"id":1},{"id":2},{"iso":"ru"})", R"({"id":1},[])", R"({"id":null})", R"({"id":"7"})", R"({"ID":7})",
          R"({"id":1,"iso":null})", R"({"id":1,"description":7})"})
        requests.push_back({items(records), "5"});
    expectReadOf("Locales", requests);
}

TEST(Requests, loneSurrogatesReadTheSameOnEveryPath)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    for (const Text &text :
         {Text(items(R"({"id":1,"name":"x\ud800x","org_id":1})")),
          Text(items(R"({"id":1,"name":"\udc00","org_id":1})")),
          Text(u"{\"D\":{\"items\":[{\"id\":1,\"name\":\"" + std::u16string{0xd800} + u"\",\"org_id\":1}]}}")}) {
        EXPECT_EQ(call("addDomains", {text}), "0");
        const std::string answer = call("getDomain", {1});
        EXPECT_EQ(answer.substr(0, 4), "0 1|");
        EXPECT_EQ(call("getDomains"), answer);
        EXPECT_EQ(call("getDomainsWithParams", {"org_id", "1"}), answer);
    }
}

} // namespace client
