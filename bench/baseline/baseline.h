#pragma once

#include "bench/baseline/request.h"
#include "bench/baseline/statement.h"
#include "bench/side.h"

namespace bench {

/// The connection of the baseline, with the settings that the library has.
class Connection
{
public:
    explicit Connection(const char *path);
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection();

    [[nodiscard]] sqlite3 *handle() const { return m_handle; }

private:
    sqlite3 *m_handle = nullptr;
};

/// What the library does, as one would write it by hand for these calls alone: SQLite's C API with kept statements,
/// simdjson for the requests, and the same structures in the client's hands. This is the measure of the library.
class Baseline : public Side
{
public:
    explicit Baseline(const char *path);

    void addEvents(std::u16string_view request, Answers &answers) override;
    void addEvent(std::u16string_view request, Answers &answers) override;
    void getEvents(unsigned int from, unsigned int to, Answers &answers) override;
    void getAffectEvents(Answers &answers) override;
    void clearEventsBeforeDateExceptAffects(unsigned int date) override;
    void addSites(std::u16string_view request) override;
    void getSites(Answers &answers) override;
    void getDevices(Answers &answers) override;
    void getDevice(unsigned int id, Answers &answers) override;
    void getUser(unsigned int id, Answers &answers) override;
    void getLocale(unsigned int id, Answers &answers) override;
    void getSite(unsigned int id, Answers &answers) override;
    void updateUser(std::u16string_view request, Answers &answers) override;

private:
    static void keepEvents(Statement &statement, Answers &answers);
    void addDevice(simdjson::ondemand::object device);
    void addSection(simdjson::ondemand::object section, sqlite3_int64 device);
    void addDeviceUser(simdjson::ondemand::object user, sqlite3_int64 device);
    void addLocation(simdjson::ondemand::object location, sqlite3_int64 site);

    Connection m_connection;
    RequestReader m_reader;
    Statement m_begin;
    Statement m_commit;
    Statement m_addEvent;
    Statement m_createIndex;
    Statement m_getEventsByIds;
    Statement m_getEventById;
    Statement m_getEvents;
    Statement m_getAffects;
    Statement m_clearBefore;
    Statement m_addSite;
    Statement m_addDevice;
    Statement m_addSection;
    Statement m_addZone;
    Statement m_addDeviceUser;
    Statement m_addLink;
    Statement m_addLocation;
    Statement m_getDevices;
    Statement m_getSections;
    Statement m_getZones;
    Statement m_getDeviceUsers;
    Statement m_getLinks;
    Statement m_getDevice;
    Statement m_getSectionsOfDevice;
    Statement m_getZonesOfDevice;
    Statement m_getDeviceUsersOfDevice;
    Statement m_getLinksOfDevice;
    Statement m_getSites;
    Statement m_getSite;
    Statement m_getUser;
    Statement m_getLocale;
    Statement m_updateUser;
};

} // namespace bench
