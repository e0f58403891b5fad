#include "bench/baseline/rows.h"

#include <cstring>

namespace bench::rows {

namespace {

bool isNull(sqlite3_stmt *row, int column)
{
    return sqlite3_column_type(row, column) == SQLITE_NULL;
}

unsigned short *text(sqlite3_stmt *row, int column)
{
    const void *units = sqlite3_column_text16(row, column);
    if (units == nullptr)
        return nullptr;
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes16(row, column));
    auto *copy = static_cast<unsigned short *>(allocate(size + sizeof(unsigned short)));
    std::memcpy(copy, units, size + sizeof(unsigned short)); // SQLite ends a text with a zero.
    return copy;
}

template <class Value>
void read(sqlite3_stmt *row, int column, Value *&value)
{
    value = nullptr;
    if (isNull(row, column))
        return;
    value = static_cast<Value *>(allocate(sizeof(Value)));
    *value = static_cast<Value>(sqlite3_column_int64(row, column));
}

void read(sqlite3_stmt *row, int column, double *&value)
{
    value = nullptr;
    if (isNull(row, column))
        return;
    value = static_cast<double *>(allocate(sizeof(double)));
    *value = sqlite3_column_double(row, column);
}

void read(sqlite3_stmt *row, int column, unsigned short *&value)
{
    value = text(row, column);
}

/// Reads columns that stand side by side.
template <class... Values>
void readAll(sqlite3_stmt *row, int firstColumn, Values *&...values)
{
    (read(row, firstColumn++, values), ...);
}

/// Six columns with its locale; null if the join has found none.
api::Domain *readDomain(sqlite3_stmt *row, int column)
{
    if (isNull(row, column))
        return nullptr;
    auto *domain = static_cast<api::Domain *>(allocate(sizeof(api::Domain)));
    domain->id = identifier(row, column);
    readAll(row, column + 1, domain->name, domain->orgId);
    domain->locale = readLocale(row, column + 3);
    return domain;
}

void readUserAt(sqlite3_stmt *row, int column, api::User &user)
{
    user.id = identifier(row, column);
    readAll(row, column + 1, user.name, user.login, user.contacts, user.isActive, user.domainId, user.orgId, user.roles,
            user.phone);
    user.domain = readDomain(row, column + 9);
}

api::Contractor *readContractor(sqlite3_stmt *row, int column)
{
    if (isNull(row, column))
        return nullptr;
    auto *contractor = static_cast<api::Contractor *>(allocate(sizeof(api::Contractor)));
    contractor->id = identifier(row, column);
    readAll(row, column + 1, contractor->inn, contractor->orgId, contractor->type, contractor->officialName,
            contractor->name, contractor->extra);
    return contractor;
}

api::Contract *readContract(sqlite3_stmt *row, int column)
{
    if (isNull(row, column))
        return nullptr;
    auto *contract = static_cast<api::Contract *>(allocate(sizeof(api::Contract)));
    contract->id = identifier(row, column);
    readAll(row, column + 1, contract->number, contract->name, contract->status, contract->date, contract->description,
            contract->extra);
    contract->contractor = readContractor(row, column + 7);
    contract->user = nullptr;
    if (!isNull(row, column + 14)) {
        contract->user = static_cast<api::User *>(allocate(sizeof(api::User)));
        readUserAt(row, column + 14, *contract->user);
    }
    return contract;
}

} // namespace

std::string selectEvents(const std::string &deviceJoin)
{
    return "SELECT EventsId,EventsTime,EventsDeviceId,EventsSectionId,EventsZoneId,EventsActive,EventsClass,"
           "EventsDetector,EventsReason,EventsLocalTime,EventsChannel,EventsData,EventsReviewId,EventsReviewState,"
           "EventsUserId,EventsIsClosed,EventsAffect,EventsJData,DevicesAccount,SectionsName,ZonesName,DomainsName "
           "FROM Events " +
           deviceJoin +
           " JOIN Devices ON EventsDeviceId = DevicesId "
           "LEFT JOIN Sections ON EventsDeviceId = SectionsDeviceId AND EventsSectionId = SectionsSectionId "
           "LEFT JOIN Zones ON EventsDeviceId = ZonesDeviceId AND EventsSectionId = ZonesSectionId "
           "AND EventsZoneId = ZonesZoneId "
           "LEFT JOIN Users ON EventsUserId = UsersId LEFT JOIN Domains ON UsersDomainId = DomainsId";
}

api::Locale *readLocale(sqlite3_stmt *row, int column)
{
    if (isNull(row, column))
        return nullptr;
    auto *locale = static_cast<api::Locale *>(allocate(sizeof(api::Locale)));
    locale->id = identifier(row, column);
    readAll(row, column + 1, locale->iso, locale->description);
    return locale;
}

void readUser(sqlite3_stmt *row, api::User &user)
{
    readUserAt(row, 0, user);
}

void readDevice(sqlite3_stmt *row, api::Device &device)
{
    device = {};
    device.id = identifier(row, 0);
    readAll(row, 1, device.account, device.configVersion, device.isParted, device.clusterId, device.domainId);
    device.domain = readDomain(row, 6);
}

void readSection(sqlite3_stmt *row, api::Section &section)
{
    section = {};
    section.id = identifier(row, 1);
    readAll(row, 2, section.name, section.scheduleId, section.tracert, section.flags, section.detector, section.arm,
            section.physic, section.form, section.delay, section.uidType);
}

void readZone(sqlite3_stmt *row, api::Zone &zone)
{
    zone.id = identifier(row, 2);
    readAll(row, 3, zone.name, zone.detector, zone.physic, zone.form, zone.flags, zone.delay, zone.scheduleId,
            zone.tracert, zone.uidType, zone.arm);
}

void readDeviceUser(sqlite3_stmt *row, api::DeviceUser &user)
{
    user = {};
    user.id = identifier(row, 1);
    readAll(row, 2, user.name, user.comment, user.phone);
}

void readSite(sqlite3_stmt *row, api::Site &site)
{
    site = {};
    site.id = identifier(row, 0);
    readAll(row, 1, site.name, site.comment, site.extra, site.isCrossing, site.address, site.contractStatus, site.type,
            site.category, site.armMode, site.isDelegated, site.domainId, site.contractId, site.isSitePlanExists);
    if (!isNull(row, 14)) {
        site.location = static_cast<api::Location *>(allocate(sizeof(api::Location)));
        site.location->id = identifier(row, 14);
        readAll(row, 15, site.location->latitude, site.location->longitude);
    }
    site.domain = readDomain(row, 17);
    site.contract = readContract(row, 23);
}

void readEvent(sqlite3_stmt *row, api::Event &event)
{
    event.id = identifier(row, 0);
    readAll(row, 1, event.time, event.deviceId, event.sectionId, event.zoneId, event.active, event.eventClass,
            event.detector, event.reason, event.localTime, event.channel, event.data, event.reviewId, event.reviewState,
            event.userId, event.isClosed, event.affect, event.jData, event.deviceAccount, event.sectionName,
            event.zoneName, event.domainName);
}

} // namespace bench::rows
