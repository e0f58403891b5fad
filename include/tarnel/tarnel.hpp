/** @file
 * TarnelLib for C++17: the functions of tarnel.h with owners, results and types. Headers only.
 *
 *     tarnel::Cache cache;
 *     const bool isNew = cache.start().value().isNew();   // throws tarnel::Error with the code and the reason
 *     cache.add<User>({{user::id(7), user::name("Ada"), user::isActive(true)}}).value();
 *     if (const auto ada = cache.get<User>(7))            // or asks: ok(), code(), reason()
 *         std::cout << utf8(ada->name) << value(ada->isActive).value_or(false);
 *     for (const Site &site : cache.where(site::domainId, 5).value())
 *         std::cout << utf8(site.name);                   // the range and all that it leads to are released
 *
 * - cache.hpp: `Cache`, every call on the records
 * - launch.hpp: its `start` and `stop`
 * - result.hpp: `Result` and `Error`
 * - kinds.hpp: `Record` and `Records`, which own what is handed out
 * - text.hpp: `text`, `utf8`, `value`, `list` for the members of structures; texts that go in
 * - request.hpp: requests of named fields
 * - fields.hpp: the fields
 */
#ifndef TARNEL_TARNEL_HPP
#define TARNEL_TARNEL_HPP

#include <tarnel/cache.hpp>

#endif
