#pragma once

#include "storage/writeconnection.h"

namespace tarnelLib::controller {

/// What clients show of a site without reading all of it.
struct SiteFields {
    bool isSiteStored = false;
    std::optional<Text> name;
    std::optional<Text> address;
};

/// The operations on the tables as a whole, with the same promises as those of a `Table`; and the statements that one
/// kind alone has.
class Database
{
public:
    [[nodiscard]] static bool createTables(WriteConnection &writer);
    /// The version of the tables; absent if the file does not say it.
    [[nodiscard]] static bool getVersion(Connection &reader, std::optional<Text> &version);
    /// True if the tables are those of this version.
    [[nodiscard]] static bool isDbVersionActual(Connection &reader);
    /// True if a read of every table runs, whatever it finds.
    [[nodiscard]] static bool isTablesValid(Connection &reader);

    [[nodiscard]] static bool setServerIp(WriteConnection &writer, std::u16string_view address);
    /// The address is absent if none was ever stored.
    [[nodiscard]] static bool getServerIp(Connection &reader, std::optional<Text> &address);
    [[nodiscard]] static bool clearAll(WriteConnection &writer);
    [[nodiscard]] static bool clearAllExceptEvents(WriteConnection &writer);

    [[nodiscard]] static bool getSiteFields(Connection &reader, SiteFields &fields, quint32 id);
};

} // namespace tarnelLib::controller
