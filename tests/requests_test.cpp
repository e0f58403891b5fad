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

TEST(Requests, numbersAreCutToTheirFields)
{
    std::vector<Request> whole;
    for (const auto &[number, stored] : std::vector<std::pair<std::string, std::string>>{{"-1", "4294967295"},
                                                                                         {"1.9", "1"},
                                                                                         {"-1.9", "4294967295"},
                                                                                         {"4294967296", "0"},
                                                                                         {"4294967301", "5"},
                                                                                         {"1e300", "0"},
                                                                                         {"-1e300", "0"},
                                                                                         {"9223372036854775807", "0"}})
        whole.push_back(one(R"({"id":)" + number + R"(,"org_id":)" + number + R"(,"locale_id":)" + number + "}",
                            stored + "|-|" + stored + "|(" + stored + ")"));
    expectReadOf("Domains", whole);
    expectReadOf("Users", {one(R"({"id":1,"roles":3.9})", "1|-|-|-|-|-|-|3"),
                           one(R"({"id":1,"roles":9223372036854775808})", "1|-|-|-|-|-|-|9223372036854775808"),
                           one(R"({"id":1,"roles":1e19})", "1|-|-|-|-|-|-|10000000000000000000"),
                           one(R"({"id":1,"roles":1e300})", "1|-|-|-|-|-|-|0")});
    expectReadOf("Sites", {one(R"({"id":1,"contract_status":2147483648,"contract_id":1.5})",
                               "1|-|-|-|-|-|-|-|0|-|-|-|-|-|-|-|0")});
}

TEST(Requests, valuesOfAnotherTypeFailTheWhole)
{
    for (const auto &[kinds, fields] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"Users", {R"("active":"1")", R"("roles":null)", R"("domain":true)"}},
             {"Domains", {R"("locale_id":{"id":1})"}},
             {"Contracts", {R"("contractor_id":"1")", R"("operator_id":null)"}},
             {"Organizations", {R"("contact":{"name":"n"})", R"("contact":1)"}},
             {"Devices",
              {R"("sections":{})", R"("sections":[1])", R"("sections":[{"id":1,"zones":[{}]}])",
               R"("users":[{"id":1}])", R"("users":[{"user_index":1,"sections":["1"]}])"}},
             {"Sites", {R"("location":[])", R"("location":{"lat":"1"})", R"("devices":[{"id":1},7])"}}}) {
        for (const std::string &field : fields)
            expectReadOf(kinds, {one(R"({"id":1,"org_id":1,)" + field + "}", "5")});
    }
}

TEST(Requests, namePartsAndTheirParents)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    EXPECT_EQ(call("addDevices", {items(R"({"id":0,"sections":[{"id":2,"zones":[{"id":3}]}]})")}), "0");
    for (const std::string record : {R"({"device":0,"section":2,"zone":3})", R"({"device":0,"section":2,"id":3})"})
        EXPECT_EQ(call("updateZone", {item(record)}), "0 3");
    for (const std::string record : {R"({"section":2,"zone":3})", R"({"device":0,"zone":3})",
                                     R"({"device":0,"section":2})", R"({"device":"0","section":2,"zone":3})"}) {
        EXPECT_EQ(call("updateZone", {item(record)}), "5");
        EXPECT_EQ(call("deleteZone", {item(record)}), record.find("\"0\"") == std::string::npos ? "5" : "0");
    }
    EXPECT_EQ(call("updateSection", {item(R"({"device":0,"section":2,"name":"n"})")}), "0 2|n");
    EXPECT_EQ(call("deleteSection", {item(R"({"device":0,"id":2})")}), "5");
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
