#include "storage/database.h"

#include "storage/tables.h"

namespace tarnelLib::controller {

namespace {

constexpr std::u16string_view currentVersion = u"0.1";

// Both tables hold one row at most, that of identifier 0.
constexpr const char *createSession = "CREATE TABLE Session (SessionId INTEGER PRIMARY KEY,SessionIp VARCHAR(255))";
constexpr const char *setIp = "INSERT OR REPLACE INTO Session (SessionId,SessionIp)VALUES (0,?)";
constexpr const char *getIp = "SELECT * FROM Session";
constexpr const char *createVersion = "CREATE TABLE Version (VersionId INTEGER PRIMARY KEY,VersionNumber VARCHAR(255))";
constexpr const char *setVersion = "INSERT OR REPLACE INTO Version (VersionId,VersionNumber)VALUES (0,?)";
constexpr const char *selectVersion = "SELECT VersionNumber FROM Version WHERE VersionId = 0";

/// A read of identifier 0 that runs if the table has what reads of the kind need.
template <class Record>
Query prepareProbe(Connection &reader)
{
    if constexpr (std::is_same_v<Record, Event>)
        return Table<Event>::prepareGetById(reader, 0);
    else if constexpr (std::is_same_v<Record, DeviceUserSectionLink>)
        return reader.prepareFor<Record>(std::array{0U, 0U},
                                         [] { return std::string("SELECT * FROM ").append(Schema<Record>::table); });
    else
        return reader.prepareGet<Record>(Identifiers<Record>{});
}

/// Clears the tables of kinds, in their order.
template <class... Records>
bool clear(WriteConnection &writer)
{
    return (writer.remove<Records>({}, std::get<KindTable<Records>>(tables).clearMessage) && ...);
}

Query prepareSet(Connection &reader, const char *sql, std::u16string_view value)
{
    Query query = reader.prepareText(sql);
    query->bind(1, value);
    return query;
}

} // namespace

bool Database::createTables(WriteConnection &writer)
{
    const auto create = [&]<class Record>(const KindTable<Record> &table) {
        return writer.run(writer.prepare([] { return sql::createTable(modelFields<Record>); }), table.createMessage);
    };
    return writer.inTransaction([&] {
        return std::apply([&](const auto &...table) { return (create(table) && ...); }, tables) &&
               writer.run(writer.prepareText(createSession), "create table session error") &&
               writer.run(writer.prepareText(createVersion), "create table version error") &&
               writer.run(prepareSet(writer, setVersion, currentVersion), "set verson error");
    });
}

bool Database::getVersion(Connection &reader, std::optional<Text> &version)
{
    return reader.readFirst(reader.prepareText(selectVersion), "get version error",
                            [&](const Statement &row) { version = row.readText(0); });
}

bool Database::isDbVersionActual(Connection &reader)
{
    std::optional<Text> version;
    return getVersion(reader, version) && version && version->view() == currentVersion;
}

bool Database::isTablesValid(Connection &reader)
{
    const auto isReadable = [&](Query &&query) {
        return reader.readEach(std::move(query), nullptr, [](const Statement &) {});
    };
    const auto probe = [&]<class Record>(const KindTable<Record> &) {
        return isReadable(prepareProbe<Record>(reader));
    };
    return reader.inSnapshot([&] {
        return std::apply([&](const auto &...table) { return (probe(table) && ...); }, tables) &&
               isReadable(reader.prepareText(getIp)) && isReadable(reader.prepareText(selectVersion));
    });
}

bool Database::setServerIp(WriteConnection &writer, std::u16string_view address)
{
    return writer.inTransaction([&] { return writer.run(prepareSet(writer, setIp, address), "set ip error"); });
}

bool Database::getServerIp(Connection &reader, std::optional<Text> &address)
{
    return reader.readFirst(reader.prepareText(getIp), "get ip error", [&](const Statement &row) {
        // The table is valid without the column, too.
        if (const std::optional<int> column = row.find("SessionIp"))
            address = row.readText(*column);
    });
}

bool Database::clearAllExceptEvents(WriteConnection &writer)
{
    return writer.inTransaction([&] {
        return clear<User, Domain, Organization, Locale, Person, Contractor, Contract, Zone, Section, DeviceUser,
                     DeviceUserSectionLink, Device, Location, Site>(writer);
    });
}

bool Database::clearAll(WriteConnection &writer)
{
    return writer.inTransaction([&] { return clearAllExceptEvents(writer) && clear<Event>(writer); });
}

} // namespace tarnelLib::controller
