#pragma once

#include "client.h"

#include <tuple>
#include <vector>

/// The kinds of record as tables of cases see them: a further kind is one more row in each of the two lists.
namespace client {

using Units = const unsigned short *;

/// The exported functions of a kind; null where it has none.
template <class Api>
struct Functions {
    unsigned int (*add)(Units, unsigned int);
    unsigned int (*get)(Api **, unsigned int);
    unsigned int (*getAll)(Api **, unsigned int *);
    unsigned int (*getWithParams)(Api **, unsigned int *, Units, unsigned int, Units, unsigned int);
    unsigned int (*update)(Api **, Units, unsigned int);
    unsigned int (*deleteItem)(Units, unsigned int);
    unsigned int (*freeOne)(Api *);
    unsigned int (*freeArray)(Api *, unsigned int);
};

inline constexpr Functions<api::Locale> localeFunctions{addLocales, getLocale, getLocales, getLocalesWithParams,
                                                        nullptr,    nullptr,   freeLocale, freeLocalesArray};
inline constexpr Functions<api::Domain> domainFunctions{addDomains,   getDomain,    getDomains, getDomainsWithParams,
                                                        updateDomain, deleteDomain, freeDomain, freeDomainsArray};
inline constexpr Functions<api::User> userFunctions{addUsers,   getUser,    getUsers, getUsersWithParams,
                                                    updateUser, deleteUser, freeUser, freeUsersArray};
inline constexpr std::tuple allFunctions{localeFunctions, domainFunctions, userFunctions};

/// What a kind's operations write to the log when they fail.
struct Messages {
    std::string get = {}, getAll = {}, getByField = {}, add = {}, update = {}, deleteItem = {};
};

/// A kind of record behind one shape.
///
/// The answer of a call is its code followed, after a success, by the records that were handed out: "0 1|ru|-" is
/// success and one record with its members in order, "-" for one that is absent. A call that fails and yet changes an
/// output answers so.
struct Kind {
    std::string table;
    std::string record; ///< Every field, in JSON, with identifier 1.
    std::string read;   ///< The same as it is read back while no other kind is in the cache.
    std::vector<std::pair<std::string, std::string>> filters; ///< Every key, with a value that finds the record.
    std::string deleteKey = {};
    Messages messages = {};

    std::function<std::string(const Text &)> add = {};
    std::function<std::string(unsigned int)> get = {};
    std::function<std::string()> getAll = {};
    std::function<std::string(const Text &, const Text &)> getWithParams = {};
    std::function<std::string(const Text &)> update = {};     ///< Empty if the kind has none.
    std::function<std::string(const Text &)> deleteItem = {}; ///< Empty if the kind has none.

    [[nodiscard]] std::string deleteRequest(unsigned int id) const
    {
        return R"({"D":{")" + deleteKey + R"(":)" + std::to_string(id) + "}}";
    }
};

const std::vector<Kind> &kinds();
const Kind &kind(std::string_view table);

/// An "add" request of records that are given in JSON, separated by commas.
std::string items(const std::string &records);
/// An "update" request.
std::string item(const std::string &record);

} // namespace client
