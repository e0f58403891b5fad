#include "kinds.h"

#include <algorithm>
#include <stdexcept>

namespace client {

namespace {

std::string shown(const unsigned short *text)
{
    const std::string content = text == nullptr ? "-" : utf8(text);
    return content.empty() ? "''" : content;
}

template <class Value>
std::string shownValue(const Value *value)
{
    return value == nullptr ? "-" : std::to_string(*value);
}
std::string shown(const unsigned int *value)
{
    return shownValue(value);
}
std::string shown(const unsigned long long *value)
{
    return shownValue(value);
}
std::string shown(const bool *value)
{
    return shownValue(value);
}
std::string shown(const api::Locale *locale);
std::string shown(const api::Domain *domain);

template <class... Members>
std::string listed(unsigned int id, Members... members)
{
    std::string all = std::to_string(id);
    (all.append("|").append(shown(members)), ...);
    return all;
}

std::string list(const api::Locale &locale)
{
    return listed(locale.id, locale.iso, locale.description);
}
std::string list(const api::Domain &domain)
{
    return listed(domain.id, domain.name, domain.orgId, domain.locale);
}
std::string list(const api::User &user)
{
    return listed(user.id, user.name, user.login, user.contacts, user.isActive, user.domainId, user.orgId, user.roles,
                  user.domain, user.phone);
}

std::string shown(const api::Locale *locale)
{
    return locale == nullptr ? "-" : std::string("(").append(list(*locale)).append(")");
}
std::string shown(const api::Domain *domain)
{
    return domain == nullptr ? "-" : std::string("(").append(list(*domain)).append(")");
}

constexpr unsigned int untouched = 4711;

std::string failed(unsigned int code, bool isUntouched)
{
    return std::to_string(code) + (isUntouched ? "" : " with changed outputs");
}

template <class Api>
std::string one(unsigned int code, Api *structure, const Functions<Api> &functions)
{
    if (code != TARNEL_SUCCESS || structure == nullptr)
        return failed(code, code != TARNEL_SUCCESS && structure == nullptr);
    const std::string answer = "0 " + list(*structure);
    return functions.freeOne(structure) == TARNEL_SUCCESS ? answer : answer + " not freed";
}

template <class Api>
std::string many(unsigned int code, Api *structures, unsigned int count, const Functions<Api> &functions)
{
    if (code != TARNEL_SUCCESS || structures == nullptr)
        return failed(code, code != TARNEL_SUCCESS && structures == nullptr && count == untouched);
    std::vector<std::string> records;
    std::transform(structures, structures + count, std::back_inserter(records),
                   [](const Api &structure) { return list(structure); });
    std::sort(records.begin(), records.end());
    std::string answer = "0";
    for (const std::string &record : records)
        answer += " " + record;
    return functions.freeArray(structures, count) == TARNEL_SUCCESS ? answer : answer + " not freed";
}

template <class Api>
Kind with(Kind kind, const Functions<Api> &functions)
{
    kind.add = [&](const Text &text) { return std::to_string(functions.add(text.units(), text.length())); };
    kind.get = [&](unsigned int id) {
        Api *structure = nullptr;
        const unsigned int code = functions.get(&structure, id);
        return one(code, structure, functions);
    };
    kind.getAll = [&] {
        Api *structures = nullptr;
        unsigned int count = untouched;
        const unsigned int code = functions.getAll(&structures, &count);
        return many(code, structures, count, functions);
    };
    kind.getWithParams = [&](const Text &field, const Text &value) {
        Api *structures = nullptr;
        unsigned int count = untouched;
        const unsigned int code =
            functions.getWithParams(&structures, &count, field.units(), field.length(), value.units(), value.length());
        return many(code, structures, count, functions);
    };
    if (functions.update != nullptr)
        kind.update = [&](const Text &text) {
            Api *structure = nullptr;
            const unsigned int code = functions.update(&structure, text.units(), text.length());
            return one(code, structure, functions);
        };
    if (functions.deleteItem != nullptr)
        kind.deleteItem = [&](const Text &text) {
            return std::to_string(functions.deleteItem(text.units(), text.length()));
        };
    return kind;
}

} // namespace

const std::vector<Kind> &kinds()
{
    static const std::vector<Kind> all{
        with({.table = "Locales",
              .record = R"({"id":1,"iso":"ru","description":"русский"})",
              .read = "1|ru|русский",
              .filters = {{"id", "1"}, {"iso", "ru"}, {"description", "русский"}},
              .messages = {.get = "get locale error",
                           .getAll = "get locales error",
                           .getByField = "get locales by field error",
                           .add = "add locales error"}},
             localeFunctions),
        with({.table = "Domains",
              .record = R"({"id":1,"name":"北京","org_id":4294967295,"locale_id":7})",
              .read = "1|北京|4294967295|(7|-|-)",
              .filters = {{"id", "1"}, {"name", "北京"}, {"org_id", "4294967295"}, {"locale_id", "7"}},
              .deleteKey = "domain_id",
              .messages = {.get = "get domain error",
                           .getAll = "get domains error",
                           .getByField = "get domains by field error",
                           .add = "add domains error",
                           .update = "add or update domain error",
                           .deleteItem = "delete domain error"}},
             domainFunctions),
        with({.table = "Users",
              .record = R"({"id":1,"name":"Ωμέγα","login":"o","contacts":"𝄞","active":1,"domain":8,"org":9,)"
                        R"("roles":9007199254740992,"phone":4294967295})",
              .read = "1|Ωμέγα|o|𝄞|1|8|9|9007199254740992|-|4294967295",
              .filters = {{"id", "1"},
                          {"name", "Ωμέγα"},
                          {"login", "o"},
                          {"contacts", "𝄞"},
                          {"active", "1"},
                          {"domain", "8"},
                          {"org", "9"},
                          {"roles", "9007199254740992"},
                          {"phone", "4294967295"}},
              .deleteKey = "op_id",
              .messages = {.get = "get user error",
                           .getAll = "get users error",
                           .getByField = "get users by field error",
                           .add = "add users error",
                           .update = "add user error",
                           .deleteItem = "delete user error"}},
             userFunctions),
    };
    return all;
}

const Kind &kind(std::string_view table)
{
    for (const Kind &candidate : kinds()) {
        if (candidate.table == table)
            return candidate;
    }
    throw std::invalid_argument("no such kind");
}

std::string items(const std::string &records)
{
    return R"({"D":{"items":[)" + records + "]}}";
}

std::string item(const std::string &record)
{
    return R"({"D":)" + record + "}";
}

} // namespace client
