#include "tools/tarnel/launchverdict.h"

#include "diagnostics/reason.h"
#include "storage/database.h"
#include "tools/tarnel/cachefile.h"

#include <fmt/format.h>

#include <unistd.h>

namespace tool {

namespace {

using tarnelLib::controller::Connection;
using tarnelLib::controller::Database;

std::string notedReason()
{
    return std::string(tarnelLib::diagnostics::takeDetail().view());
}

std::string versionOf(Connection &connection)
{
    std::optional<tarnelLib::controller::Text> version;
    if (!Database::getVersion(connection, version))
        return "the version of its tables cannot be read: " + notedReason();
    if (!version)
        return "it does not say the version of its tables";
    tarnelLib::diagnostics::FixedText<64> shown;
    shown.append(version->view());
    return fmt::format("its tables are of version {}", shown.view());
}

/// Of a file that a launch does not keep.
LaunchVerdict refused(const CacheFile &cache, unsigned int code, const std::string &reason)
{
    const auto kept = [&](std::string_view why) {
        return LaunchVerdict{TARNEL_DATABASE_UNAVAILABLE, fmt::format("{}; {}", reason, why), true};
    };
    if (cache.place().isInUse)
        return kept("it is not replaced while another process uses it");
    if (::access(cache.place().file.parent_path().c_str(), W_OK) != 0)
        return kept("it cannot be replaced, as its directory cannot be written");
    return {code, reason, true};
}

} // namespace

LaunchVerdict launchVerdict(CacheFile &cache)
{
    static_cast<void>(tarnelLib::diagnostics::takeDetail());
    Connection &connection = cache.connection();
    if (cache.code() != SQLITE_OK && !tarnelLib::controller::Failure::isOfContent(cache.code()))
        return {TARNEL_DATABASE_UNAVAILABLE, sqlite3_errstr(cache.code()), false};
    if (!Database::isDbVersionActual(connection))
        return connection.hasMetCircumstance()
                   ? LaunchVerdict{TARNEL_DATABASE_UNAVAILABLE, notedReason(), false}
                   : refused(cache, TARNEL_DATABASE_RECREATED_VERSION_MISMATCH, versionOf(connection));
    if (!Database::isTablesValid(connection)) {
        const std::string reason = notedReason();
        return connection.hasMetCircumstance() ? LaunchVerdict{TARNEL_DATABASE_UNAVAILABLE, reason, false}
                                               : refused(cache, TARNEL_DATABASE_RECREATED_TABLES_INVALID, reason);
    }
    return {TARNEL_SUCCESS, "version and tables are as they should be", false};
}

} // namespace tool
