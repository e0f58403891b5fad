#pragma once

#include "bench/answers.h"

#include <sqlite3.h>

#include <cstdlib>
#include <new>
#include <string>

/// From the rows of the selects here to the structures of the public header.
namespace bench::rows {

const std::string selectUsers =
    "SELECT UsersId,UsersName,UsersLogin,UsersContacts,UsersIsActive,UsersDomainId,UsersOrgId,UsersRoles,UsersPhone,"
    "DomainsId,DomainsName,DomainsOrgId,DomainsLocaleId,LocalesIso,LocalesDescription FROM Users "
    "LEFT JOIN Domains ON DomainsId = UsersDomainId LEFT JOIN Locales ON LocalesId = DomainsLocaleId";

const std::string selectDevices =
    "SELECT DevicesId,DevicesAccount,DevicesConfigVersion,DevicesIsParted,DevicesClusterId,DevicesDomainId,"
    "DomainsId,DomainsName,DomainsOrgId,DomainsLocaleId,LocalesIso,LocalesDescription FROM Devices "
    "LEFT JOIN Domains ON DomainsId = DevicesDomainId LEFT JOIN Locales ON LocalesId = DomainsLocaleId";

const std::string selectSections =
    "SELECT SectionsDeviceId,SectionsSectionId,SectionsName,SectionsScheduleId,SectionsTracert,SectionsFlags,"
    "SectionsDetector,SectionsArm,SectionsPhysic,SectionsForm,SectionsDelay,SectionsUidType FROM Sections";

const std::string selectZones =
    "SELECT ZonesDeviceId,ZonesSectionId,ZonesZoneId,ZonesName,ZonesDetector,ZonesPhysic,ZonesForm,ZonesFlags,"
    "ZonesDelay,ZonesScheduleId,ZonesTracert,ZonesUidType,ZonesArm FROM Zones";

const std::string selectDeviceUsers = "SELECT DeviceUsersDeviceId,DeviceUsersDeviceUserId,DeviceUsersName,"
                                      "DeviceUsersComment,DeviceUsersPhone FROM DeviceUsers";

const std::string selectLinks = "SELECT DeviceUserSectionLinksDeviceId,DeviceUserSectionLinksDeviceUserId,"
                                "DeviceUserSectionLinksSectionId FROM DeviceUserSectionLinks";

const std::string selectSites =
    "SELECT SitesId,SitesName,SitesComment,SitesExtra,SitesIsCrossing,SitesAddress,SitesContractStatus,SitesType,"
    "SitesCategory,SitesArmMode,SitesIsDelegated,SitesDomainId,SitesContractId,SitesIsSitePlanExists,"
    "LocationsId,LocationsLatitude,LocationsLongitude,"
    "Own.DomainsId,Own.DomainsName,Own.DomainsOrgId,Own.DomainsLocaleId,OwnLocale.LocalesIso,"
    "OwnLocale.LocalesDescription,"
    "ContractsId,ContractsNumber,ContractsName,ContractsStatus,ContractsDate,ContractsDescription,ContractsExtra,"
    "ContractorsId,ContractorsInn,ContractorsOrgId,ContractorsType,ContractorsOfficialName,ContractorsName,"
    "ContractorsExtra,"
    "UsersId,UsersName,UsersLogin,UsersContacts,UsersIsActive,UsersDomainId,UsersOrgId,UsersRoles,UsersPhone,"
    "Its.DomainsId,Its.DomainsName,Its.DomainsOrgId,Its.DomainsLocaleId,ItsLocale.LocalesIso,"
    "ItsLocale.LocalesDescription FROM Sites "
    "LEFT JOIN Locations ON LocationsId = SitesId "
    "LEFT JOIN Domains AS Own ON Own.DomainsId = SitesDomainId "
    "LEFT JOIN Locales AS OwnLocale ON OwnLocale.LocalesId = Own.DomainsLocaleId "
    "LEFT JOIN Contracts ON ContractsId = SitesContractId "
    "LEFT JOIN Contractors ON ContractorsId = ContractsContractorId "
    "LEFT JOIN Users ON UsersId = ContractsUserId "
    "LEFT JOIN Domains AS Its ON Its.DomainsId = UsersDomainId "
    "LEFT JOIN Locales AS ItsLocale ON ItsLocale.LocalesId = Its.DomainsLocaleId";

/// The select of events, in which `deviceJoin` says how they are joined with devices.
std::string selectEvents(const std::string &deviceJoin);

/// Three columns from the given one on; null if there is none, as of a join.
api::Locale *readLocale(sqlite3_stmt *row, int column);
void readUser(sqlite3_stmt *row, api::User &user);
void readDevice(sqlite3_stmt *row, api::Device &device);
void readSection(sqlite3_stmt *row, api::Section &section);
void readZone(sqlite3_stmt *row, api::Zone &zone);
void readDeviceUser(sqlite3_stmt *row, api::DeviceUser &user);
void readSite(sqlite3_stmt *row, api::Site &site);
void readEvent(sqlite3_stmt *row, api::Event &event);

inline unsigned int identifier(sqlite3_stmt *row, int column)
{
    return static_cast<unsigned int>(sqlite3_column_int64(row, column));
}

inline void *allocate(std::size_t size)
{
    if (void *block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

/// Makes room for one element more at the end of a block that doubles its size.
template <class Element>
Element &append(Element *&first, unsigned int &count)
{
    if ((count & (count - 1)) == 0) {
        const std::size_t capacity = count == 0 ? 1 : std::size_t{count} * 2;
        void *grown = std::realloc(first, capacity * sizeof(Element));
        if (grown == nullptr)
            throw std::bad_alloc();
        first = static_cast<Element *>(grown);
    }
    return first[count++];
}

} // namespace bench::rows
