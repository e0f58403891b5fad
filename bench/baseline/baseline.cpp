#include "bench/baseline/baseline.h"

#include "bench/baseline/release.h"
#include "bench/baseline/rows.h"

#include <array>
#include <charconv>

namespace bench {

namespace {

namespace ondemand = simdjson::ondemand;

constexpr std::array eventMembers = std::to_array<Member>({{"id", 1},
                                                           {"time", 2},
                                                           {"device", 3},
                                                           {"section", 4},
                                                           {"zone", 5},
                                                           {"active", 6},
                                                           {"class", 7},
                                                           {"detector", 8},
                                                           {"reason", 9},
                                                           {"localtime", 10},
                                                           {"channel", 11},
                                                           {"data", 12},
                                                           {"review_id", 13},
                                                           {"review_state", 14},
                                                           {"operator_id", 15},
                                                           {"is_closed", 16},
                                                           {"affect", 17},
                                                           {"jdata", 18}});

constexpr std::array userMembers = std::to_array<Member>({{"id", 1},
                                                          {"name", 2},
                                                          {"login", 3},
                                                          {"contacts", 4},
                                                          {"active", 5},
                                                          {"domain", 6},
                                                          {"org", 7},
                                                          {"roles", 8},
                                                          {"phone", 9}});

constexpr std::string_view insertEvent =
    "INSERT OR REPLACE INTO Events (EventsId,EventsTime,EventsDeviceId,EventsSectionId,EventsZoneId,EventsActive,"
    "EventsClass,EventsDetector,EventsReason,EventsLocalTime,EventsChannel,EventsData,EventsReviewId,"
    "EventsReviewState,EventsUserId,EventsIsClosed,EventsAffect,EventsJData) "
    "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

constexpr std::string_view insertSite =
    "INSERT OR REPLACE INTO Sites (SitesId,SitesName,SitesComment,SitesExtra,SitesIsCrossing,SitesDomainId,"
    "SitesAddress,SitesContractId,SitesContractStatus,SitesType,SitesCategory,SitesArmMode,SitesIsDelegated,"
    "SitesIsSitePlanExists) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

constexpr std::string_view insertDevice =
    "INSERT OR REPLACE INTO Devices (DevicesId,DevicesAccount,DevicesDomainId,DevicesConfigVersion,DevicesIsParted,"
    "DevicesClusterId) VALUES (?,?,?,?,?,?)";

constexpr std::string_view insertSection =
    "INSERT OR REPLACE INTO Sections (SectionsSectionId,SectionsDeviceId,SectionsName,SectionsScheduleId,"
    "SectionsTracert,SectionsFlags,SectionsDetector,SectionsArm,SectionsPhysic,SectionsForm,SectionsDelay,"
    "SectionsUidType) VALUES (?,?,?,?,?,?,?,?,?,?,?,?)";

constexpr std::string_view insertZone =
    "INSERT OR REPLACE INTO Zones (ZonesZoneId,ZonesDeviceId,ZonesSectionId,ZonesName,ZonesDetector,ZonesPhysic,"
    "ZonesForm,ZonesFlags,ZonesDelay,ZonesScheduleId,ZonesTracert,ZonesUidType,ZonesArm) "
    "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?)";

constexpr std::string_view insertDeviceUser =
    "INSERT OR REPLACE INTO DeviceUsers (DeviceUsersDeviceUserId,DeviceUsersDeviceId,DeviceUsersName,"
    "DeviceUsersComment,DeviceUsersPhone) VALUES (?,?,?,?,?)";

constexpr std::string_view insertLink =
    "INSERT OR IGNORE INTO DeviceUserSectionLinks (DeviceUserSectionLinksDeviceId,DeviceUserSectionLinksDeviceUserId,"
    "DeviceUserSectionLinksSectionId) VALUES (?,?,?)";

/// A field that the request leaves out keeps what it holds.
constexpr std::string_view upsertUser =
    "INSERT INTO Users (UsersId,UsersName,UsersLogin,UsersContacts,UsersIsActive,UsersDomainId,UsersOrgId,UsersRoles,"
    "UsersPhone) VALUES (?,?,?,?,?,?,?,?,?) ON CONFLICT (UsersId) DO UPDATE SET "
    "UsersName=ifnull(excluded.UsersName,UsersName),UsersLogin=ifnull(excluded.UsersLogin,UsersLogin),"
    "UsersContacts=ifnull(excluded.UsersContacts,UsersContacts),"
    "UsersIsActive=ifnull(excluded.UsersIsActive,UsersIsActive),"
    "UsersDomainId=ifnull(excluded.UsersDomainId,UsersDomainId),UsersOrgId=ifnull(excluded.UsersOrgId,UsersOrgId),"
    "UsersRoles=ifnull(excluded.UsersRoles,UsersRoles),UsersPhone=ifnull(excluded.UsersPhone,UsersPhone)";

/// A number into the text of a JSON array of numbers.
void appendTo(std::string &list, sqlite3_int64 number)
{
    std::array<char, 24> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    list.append(list.empty() ? "[" : ",").append(digits.data(), result.ptr);
}

} // namespace

Connection::Connection(const char *path)
{
    const auto run = [this](const char *sql) {
        if (sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(m_handle));
    };
    if (sqlite3_open_v2(path, &m_handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK)
        throw std::runtime_error("the baseline's file cannot be opened");
    sqlite3_busy_timeout(m_handle, 5000);
    run("PRAGMA journal_mode=WAL");
    run("PRAGMA synchronous=FULL");
    run("PRAGMA cache_size=-16384");
}

Connection::~Connection()
{
    sqlite3_close(m_handle);
}

Baseline::Baseline(const char *path)
    : m_connection(path), m_begin(m_connection.handle(), "BEGIN"), m_commit(m_connection.handle(), "COMMIT"),
      m_addEvent(m_connection.handle(), insertEvent),
      m_createIndex(m_connection.handle(), "CREATE INDEX IF NOT EXISTS EventsTimeIndex ON Events (EventsTime)"),
      m_getEventsByIds(m_connection.handle(),
                       rows::selectEvents("INNER") + " WHERE EventsId IN (SELECT value FROM json_each(?))"),
      m_getEventById(m_connection.handle(), rows::selectEvents("LEFT") + " WHERE EventsId = ?"),
      m_getEvents(m_connection.handle(), rows::selectEvents("INNER") + " WHERE EventsTime BETWEEN ? AND ?"),
      m_getAffects(m_connection.handle(), rows::selectEvents("INNER") + " WHERE EventsAffect = 1"),
      m_clearBefore(m_connection.handle(), "DELETE FROM Events WHERE EventsTime <= ? AND EventsAffect = 0"),
      m_addSite(m_connection.handle(), insertSite), m_addDevice(m_connection.handle(), insertDevice),
      m_addSection(m_connection.handle(), insertSection), m_addZone(m_connection.handle(), insertZone),
      m_addDeviceUser(m_connection.handle(), insertDeviceUser), m_addLink(m_connection.handle(), insertLink),
      m_addLocation(m_connection.handle(), "INSERT OR REPLACE INTO Locations (LocationsId,LocationsLatitude,"
                                           "LocationsLongitude) VALUES (?,?,?)"),
      m_getDevices(m_connection.handle(), rows::selectDevices),
      m_getSections(m_connection.handle(), rows::selectSections), m_getZones(m_connection.handle(), rows::selectZones),
      m_getDeviceUsers(m_connection.handle(), rows::selectDeviceUsers),
      m_getLinks(m_connection.handle(), rows::selectLinks),
      m_getDevice(m_connection.handle(), rows::selectDevices + " WHERE DevicesId = ?"),
      m_getSectionsOfDevice(m_connection.handle(), rows::selectSections + " WHERE SectionsDeviceId = ?"),
      m_getZonesOfDevice(m_connection.handle(), rows::selectZones + " WHERE ZonesDeviceId = ?"),
      m_getDeviceUsersOfDevice(m_connection.handle(), rows::selectDeviceUsers + " WHERE DeviceUsersDeviceId = ?"),
      m_getLinksOfDevice(m_connection.handle(), rows::selectLinks + " WHERE DeviceUserSectionLinksDeviceId = ?"),
      m_getSites(m_connection.handle(), rows::selectSites),
      m_getSite(m_connection.handle(), rows::selectSites + " WHERE SitesId = ?"),
      m_getUser(m_connection.handle(), rows::selectUsers + " WHERE UsersId = ?"),
      m_getLocale(m_connection.handle(),
                  "SELECT LocalesId,LocalesIso,LocalesDescription FROM Locales WHERE LocalesId = ?"),
      m_updateUser(m_connection.handle(), upsertUser)
{
}

void Baseline::keepEvents(Statement &statement, Answers &answers)
{
    api::Event *events = nullptr;
    unsigned int count = 0;
    statement.forEachRow([&](sqlite3_stmt *row) { rows::readEvent(row, rows::append(events, count)); });
    answers.take(events, count, rows::release<api::Event>);
}

void Baseline::addEvents(std::u16string_view request, Answers &answers)
{
    std::string ids;
    m_begin.run();
    for (ondemand::object event : m_reader.items(request)) {
        appendTo(ids, bindMembers(event, m_addEvent, eventMembers));
        m_addEvent.run();
    }
    m_createIndex.run();
    ids += "]";
    m_getEventsByIds.bind(1, std::string_view(ids));
    keepEvents(m_getEventsByIds, answers);
    m_commit.run();
}

void Baseline::addEvent(std::u16string_view request, Answers &answers)
{
    m_begin.run();
    const sqlite3_int64 id = bindMembers(m_reader.record(request), m_addEvent, eventMembers);
    m_addEvent.run();
    m_createIndex.run();
    m_getEventById.bind(1, id);
    keepEvents(m_getEventById, answers);
    m_commit.run();
}

void Baseline::getEvents(unsigned int from, unsigned int to, Answers &answers)
{
    m_getEvents.bind(1, sqlite3_int64{from});
    m_getEvents.bind(2, sqlite3_int64{to});
    keepEvents(m_getEvents, answers);
}

void Baseline::getAffectEvents(Answers &answers)
{
    keepEvents(m_getAffects, answers);
}

void Baseline::clearEventsBeforeDateExceptAffects(unsigned int date)
{
    m_begin.run();
    m_clearBefore.bind(1, sqlite3_int64{date});
    m_clearBefore.run();
    m_commit.run();
}

void Baseline::getUser(unsigned int id, Answers &answers)
{
    m_getUser.bind(1, sqlite3_int64{id});
    m_getUser.forEachRow([&](sqlite3_stmt *row) {
        auto *user = static_cast<api::User *>(rows::allocate(sizeof(api::User)));
        rows::readUser(row, *user);
        answers.take(user, 1, rows::release<api::User>);
    });
}

void Baseline::getLocale(unsigned int id, Answers &answers)
{
    m_getLocale.bind(1, sqlite3_int64{id});
    m_getLocale.forEachRow(
        [&](sqlite3_stmt *row) { answers.take(rows::readLocale(row, 0), 1, rows::release<api::Locale>); });
}

void Baseline::updateUser(std::u16string_view request, Answers &answers)
{
    m_begin.run();
    const sqlite3_int64 id = bindMembers(m_reader.record(request), m_updateUser, userMembers);
    m_updateUser.run();
    getUser(static_cast<unsigned int>(id), answers);
    m_commit.run();
}

} // namespace bench
