#include "storage/database.h"

#include "storage/table.h"

namespace tarnelLib::controller {

namespace {

constexpr std::u16string_view currentVersion = u"0.1";

// Both tables hold one row at most, that of identifier 0.
constexpr const char *createSession = "CREATE TABLE Session (SessionId INTEGER PRIMARY KEY,SessionIp VARCHAR(255))";
constexpr const char *setIp = "INSERT OR REPLACE INTO Session (SessionId,SessionIp)VALUES (0,?)";
constexpr const char *getIp = "SELECT * FROM Session";
constexpr const char *createVersion = "CREATE TABLE Version (VersionId INTEGER PRIMARY KEY,VersionNumber VARCHAR(255))";
constexpr const char *setVersion = "INSERT OR REPLACE INTO Version (VersionId,VersionNumber)VALUES (0,?)";
constexpr const char *getVersion = "SELECT VersionNumber FROM Version WHERE VersionId = 0";

/// The table of a kind, with what is logged when it cannot be created or cleared.
template <class Record>
struct KindTable {
    const char *createMessage;
    const char *clearMessage;
};

/// In the order of creation.
constexpr std::tuple tables = {
    KindTable<User>{"create table users error", "clear users error"},
    KindTable<Domain>{"create table domains error", "clear domains error"},
    KindTable<Organization>{"create table orgs error", "clear orgs error"},
    KindTable<Locale>{"create table locales error", "clear locales error"},
    KindTable<Person>{"create table persons error", "clear persons error"},
    KindTable<Contractor>{"create table contractors error", "clear contractors error"},
    KindTable<Contract>{"create table contracts error", "clear contracts error"},
    KindTable<Zone>{"create table zones error", "clear zones error"},
    KindTable<Section>{"create table sections error", "clear sections error"},
    KindTable<Device>{"create table devices error", "clear devices error"},
    KindTable<Location>{"create table locations error", "clear locations error"},
    KindTable<Site>{"create table sites error", "clear sites error"},
    KindTable<DeviceUser>{"create table device users error", "clear deviceUsers error"},
    KindTable<Event>{"create table events error", "clear events error"},
    KindTable<DeviceUserSectionLink>{"create table DeviceUserSectionLinks error",
                                     "clear deviceUsers-section links error"},
};

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

bool Database::isDbVersionActual(Connection &reader)
{
    std::optional<Text> version;
    return reader.readFirst(reader.prepareText(getVersion), "get version error",
                            [&](const Statement &row) { version = row.readText(0); }) &&
           version && version->view() == currentVersion;
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
               isReadable(reader.prepareText(getIp)) && isReadable(reader.prepareText(getVersion));
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
