/** @file
 * TarnelLib: a local, persistent cache of the reference data of a monitoring and alarm-response service.
 *
 * Plain C. In C++ the structures live in namespace `tarnelLib::api`, the functions in the global namespace.
 *
 * @par How it is used
 * A thread of the client calls `launchCache` and stays in it. Once `getState` says TARNEL_STATE_RUNNING, records are
 * pushed in as JSON and read back as structures, from any thread; `exitCache` ends the launching thread's call. The
 * records are kept in the SQLite file "CacheDb" in the current directory of the process, which should be on a local
 * disk.
 *
 * @par Texts
 * Every text is UTF-16 in the byte order of the machine. One that goes in is a pointer and its number of 16-bit code
 * units, and needs no terminator; a null pointer is an empty text if the length is 0. One that comes out ends with a
 * zero code unit.
 *
 * @par Structures
 * They have the layout that a C compiler gives them; a `bool` is one byte. Every member is a pointer, null for a
 * field that the record does not have, but for the identifier and the counts. A list is a pointer to its first
 * element, and its count is the member after that; an empty list is null and 0. The comment at a member gives the
 * field's key and type in JSON.
 *
 * @par Requests
 * A request is a JSON object whose member "D" is an object: the record itself ("update"), `{"items": [record, ...]}`
 * ("add"), or the identifier under the key that the function names ("delete"). A record's identifier is required;
 * any other field may be left out, but must not be null or of another type than the one given at the structure.
 * Numbers for unsigned fields are cut to a whole number and then to their low 32 bits; for signed fields, fields of 8
 * bits and flags, one that is not a whole number within 32 bits counts as 0. A flag is set by any number but 0: the
 * JSON values `true` and `false` are both stored as false. A request is carried out whole or not at all.
 *
 * @par Ownership
 * An output pointer must point to a null pointer on entry, or nothing is done (TARNEL_INVALID_ARGUMENT). What is
 * handed out was made with `malloc`, belongs to the caller, and is released by the kind's free functions alone,
 * which also release all that the members point to; a single text is released with `free`. On any failure the
 * outputs stay as they were.
 *
 * @par Threads
 * Any function may be called from any thread. The get functions run beside each other and beside whatever writes:
 * each sees the records as they are when it begins, with all that calls have stored which have returned by then. Calls
 * that write are carried out one after another, in the order in which they ask. `getState`, `getLaunchCacheResult`
 * and the free functions never wait for any of them. An exit waits for the calls in progress; those that wait for
 * their turn return TARNEL_NOT_AVAILABLE.
 * In the child of a `fork` a cache inherited from the parent is not available.
 *
 * @par Codes
 * Every function returns a `TarnelResult` unless it says otherwise. Each that needs the cache can return
 * TARNEL_NOT_AVAILABLE (no cache is running) and TARNEL_ALLOCATION_FAILED; these two are not repeated below.
 * A failure of the database is also written to Qt's debug log, with the text of SQLite. `tarnelReason` in
 * diagnostics.h says why a call failed.
 *
 * @par Qt
 * The cache registers two Qt SQL connections, named "" and "CacheDb": a client that uses Qt SQL itself must name its
 * own otherwise. A client that has a Qt application object makes it before `launchCache` and keeps it until the
 * launch has ended; otherwise the cache makes one.
 */
#ifndef TARNEL_TARNEL_H
#define TARNEL_TARNEL_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

/** The codes that the functions return. Compare with the numbers: they never change. */
typedef enum TarnelResult {
    TARNEL_SUCCESS = 0,                               /**< Done. As launch result: the stored records were kept. */
    TARNEL_ALLOCATION_FAILED = 3,                     /**< Out of memory. */
    TARNEL_INVALID_REQUEST = 5,                       /**< A key is missing or holds a value of the wrong type. */
    TARNEL_DATABASE_UNAVAILABLE = 6,                  /**< Launch result: no database could be opened or made. */
    TARNEL_READ_FAILED = 7,                           /**< The database could not be read. */
    TARNEL_NOT_FOUND = 8,                             /**< No such record, or none at all. */
    TARNEL_WRITE_FAILED = 9,                          /**< Nothing was stored: the database refused. */
    TARNEL_INVALID_ARGUMENT = 10,                     /**< A pointer, a length, a filter field, or no JSON object. */
    TARNEL_PARENT_NOT_FOUND = 11,                     /**< Stored, but what it belongs to is not in the cache. */
    TARNEL_DATABASE_CREATED = 100,                    /**< Launch result: there was no file; a new one was made. */
    TARNEL_DATABASE_RECREATED_TABLES_INVALID = 101,   /**< Launch result: a table was missing; file made anew. */
    TARNEL_DATABASE_RECREATED_OPEN_FAILED = 102,      /**< Launch result: it could not be opened; file made anew. */
    TARNEL_DATABASE_RECREATED_VERSION_MISMATCH = 103, /**< Launch result: another version; file made anew. */
    TARNEL_NOT_AVAILABLE = 255                        /**< No cache is running. */
} TarnelResult;

/** The states of the cache. */
typedef enum TarnelState {
    TARNEL_STATE_NONE = 0,      /**< Not launched, still connecting to the database, or exited. */
    TARNEL_STATE_CONNECTED = 1, /**< Connected; the event loop is about to run. */
    TARNEL_STATE_RUNNING = 2    /**< The cache is running. */
} TarnelState;

#ifdef __cplusplus
namespace tarnelLib {
namespace api {
#endif

/** A language or regional setting. */
typedef struct Locale {
    unsigned int id;             /**< "id": number. */
    unsigned short *iso;         /**< "iso": string; the ISO code. */
    unsigned short *description; /**< "description": string. */
} Locale;

/** The administrative unit to which users, devices and sites belong. */
typedef struct Domain {
    unsigned int id;      /**< "id": number. */
    unsigned short *name; /**< "name": string. */
    unsigned int *orgId;  /**< "org_id": number; the organization's identifier. */
    Locale *locale;       /**< "locale_id": number. Has only its identifier while that locale is not in the cache. */
} Domain;

/** An operator account of the service. */
typedef struct User {
    unsigned int id;           /**< "id": number. */
    unsigned short *name;      /**< "name": string. */
    unsigned short *login;     /**< "login": string. */
    unsigned short *contacts;  /**< "contacts": string. */
    bool *isActive;            /**< "active": number, 1 for active. */
    unsigned int *domainId;    /**< "domain": number. */
    unsigned int *orgId;       /**< "org": number; the organization's identifier. */
    unsigned long long *roles; /**< "roles": number; a bit mask, exact up to 2^53. */
    Domain *domain;            /**< The domain of `domainId`, if it is in the cache; never part of a request. */
    unsigned int *phone;       /**< "phone": number. */
} User;

/** The contact of an organization; it is stored, and deleted, with the organization. */
typedef struct Person {
    unsigned int id;        /**< "id": number. */
    unsigned short *name;   /**< "name": string. */
    unsigned short *phone;  /**< "phone": string. */
    unsigned short *email;  /**< "email": string. */
    unsigned short *postal; /**< "postal": string. */
} Person;

/** A legal entity known to the service. */
typedef struct Organization {
    unsigned int id;              /**< "org_id": number. */
    unsigned short *inn;          /**< "inn": string; a registration number, as are `kpp` and `ogrn`. */
    unsigned short *officialName; /**< "off_name": string. */
    unsigned short *shortName;    /**< "short_name": string. */
    unsigned short *kpp;          /**< "kpp": string. */
    unsigned short *ogrn;         /**< "ogrn": string. */
    unsigned short *address;      /**< "address_text": string. */
    Person *contact;              /**< "contact": object with the keys of `Person`. */
    Locale *locale;               /**< "locale_id": number. Null while that locale is not in the cache. */
} Organization;

/** The party with which service contracts are made. */
typedef struct Contractor {
    unsigned int id;              /**< "id": number. */
    unsigned short *inn;          /**< "inn": string; the taxpayer number. */
    unsigned int *orgId;          /**< "org_id": number; the related organization's identifier. */
    unsigned int *type;           /**< "type": number; a code. */
    unsigned short *officialName; /**< "off_name": string; the full name. */
    unsigned short *name;         /**< "name": string; the short name. */
    unsigned short *extra;        /**< "extra": string; additional text. */
} Contractor;

/** A service agreement. */
typedef struct Contract {
    unsigned int id;             /**< "id": number. */
    unsigned short *number;      /**< "number": string. */
    Contractor *contractor;      /**< "contractor_id": number. Null while that contractor is not in the cache. */
    unsigned short *name;        /**< "c_name": string. */
    unsigned int *status;        /**< "status": number; a code. */
    unsigned int *date;          /**< "date": number, of a unit that the client chooses. */
    unsigned short *description; /**< "description": string. */
    unsigned short *extra;       /**< "extra": string; additional text. */
    User *user;                  /**< "operator_id": number. Null while that user is not in the cache. */
} Contract;

/** A detection zone of an alarm device. Its number is unique within the device. */
typedef struct Zone {
    unsigned int id;          /**< "id": number. */
    unsigned short *name;     /**< "name": string. */
    unsigned int *detector;   /**< "detector": number. */
    unsigned int *physic;     /**< "physic": number. */
    unsigned int *form;       /**< "form": number. */
    unsigned int *flags;      /**< "flags": number. */
    unsigned int *delay;      /**< "delay": number. */
    unsigned int *scheduleId; /**< "schedule_id": number. */
    unsigned int *tracert;    /**< "tracert": number. */
    unsigned int *uidType;    /**< "uid_type": number. */
    unsigned int *arm;        /**< "arm": number. */
} Zone;

/** A partition of an alarm device. */
typedef struct Section {
    unsigned int id;          /**< "id": number. */
    unsigned short *name;     /**< "name": string. */
    unsigned int *scheduleId; /**< "schedule_id": number. */
    Zone *zones;              /**< "zones": array of zones. */
    unsigned int zonesCount;
    unsigned int *tracert;  /**< "tracert": number. */
    unsigned int *flags;    /**< "flags": number. */
    unsigned int *detector; /**< "detector": number. */
    unsigned int *arm;      /**< "arm": number. */
    unsigned int *physic;   /**< "physic": number. */
    unsigned int *form;     /**< "form": number. */
    unsigned int *delay;    /**< "delay": number. */
    unsigned int *uidType;  /**< "uid_type": number. */
} Section;

/** A person who is programmed into an alarm device. */
typedef struct DeviceUser {
    unsigned int id;         /**< "user_index": number. */
    unsigned short *name;    /**< "name": string. */
    unsigned short *comment; /**< "comment": string. */
    unsigned short *phone;   /**< "phone": string. */
    unsigned int *sections;  /**< "sections": array of numbers; the sections that the person may operate. */
    unsigned int sectionsCount;
} DeviceUser;

/** An alarm device with all that is programmed into it. */
typedef struct Device {
    unsigned int id;             /**< "id": number. */
    unsigned int *account;       /**< "account": number; the account number. */
    Domain *domain;              /**< The domain of `domainId`, if it is in the cache; never part of a request. */
    unsigned int *configVersion; /**< "config_version": number; of the configuration (firmware). */
    Section *sections;           /**< "sections": array of sections. */
    unsigned int sectionsCount;
    DeviceUser *deviceUsers; /**< "users": array of device users. */
    unsigned int deviceUsersCount;
    bool *isParted;          /**< "parted": number, 1 for partitioned. */
    unsigned int *clusterId; /**< "cluster_id": number. Devices cannot be filtered by it. */
    unsigned int *domainId;  /**< "domain": number. */
} Device;

/** The coordinates of a site, in degrees. */
typedef struct Location {
    unsigned int id;   /**< The site's identifier; never part of a request. */
    double *latitude;  /**< "lat": number. */
    double *longitude; /**< "lon": number. */
} Location;

/** A guarded site. */
typedef struct Site {
    unsigned int id;         /**< "id": number. */
    unsigned short *name;    /**< "name": string. */
    unsigned short *comment; /**< "comment": string. */
    unsigned short *extra;   /**< "extra": string; additional text. */
    bool *isCrossing;        /**< "is_crossing": number, 1 for set. */
    Domain *domain;          /**< The domain of `domainId`, if it is in the cache; never part of a request. */
    unsigned short *address; /**< "address_text": string. */
    Contract *contract;      /**< The contract of `contractId`, if it is in the cache; never part of a request. */
    int *contractStatus;     /**< "contract_status": a code; a whole number within 32 bits, any other is stored as 0. */
    unsigned int *type;      /**< "type": number; a code, as are the next two. */
    unsigned int *category;  /**< "category": number. */
    unsigned int *armMode;   /**< "arm_mode": number. */
    bool *isDelegated;       /**< "delegated": number, 1 for set. */
    Device *devices;         /**< "devices": array of devices, stored by `addSites`. Always null in what is read. */
    unsigned int devicesCount;
    unsigned int *domainId; /**< "domain": number. */
    Location *location;     /**< "location": object with the keys of `Location`. */
    int *contractId;        /**< "contract_id": whole number within 32 bits; any other is stored as 0. */
    bool *isSitePlanExists; /**< "site_plan": number, 1 if there is a plan. */
} Site;

/** An entry of the alarm and monitoring history. */
typedef struct Event {
    unsigned int id;    /**< "id": number. */
    unsigned int *time; /**< "time": number, of a unit that the client chooses. */
    int *deviceId; /**< "device": whole number within 32 bits; any other is stored as 0. The device that reported it. */
    unsigned int *sectionId; /**< "section": number; a section of that device. */
    unsigned int *zoneId;    /**< "zone": number; a zone of that section. */
    unsigned char *active;   /**< "active": number; a code, of which the low 8 bits are stored, as of the next three. */
    unsigned char *eventClass; /**< "class": number. */
    unsigned char *detector;   /**< "detector": number; the type of the detector. */
    unsigned char *reason;     /**< "reason": number. */
    unsigned int *localTime;   /**< "localtime": number; the time in the device's own reckoning. */
    int *channel; /**< "channel": whole number within 32 bits; any other is stored as 0. The way by which it came. */
    unsigned short *data;        /**< "data": string; free text. */
    unsigned int *reviewId;      /**< "review_id": number; the identifier of the review. */
    unsigned char *reviewState;  /**< "review_state": number; a code, of which the low 8 bits are stored. */
    unsigned int *userId;        /**< "operator_id": number; the user who handled it. */
    bool *isClosed;              /**< "is_closed": number, 1 for closed. */
    bool *affect;                /**< "affect": number, 1 for an event that must outlive the pruning of the history. */
    unsigned short *jData;       /**< "jdata": string; further data, kept as the server sent it. */
    unsigned int *deviceAccount; /**< The account of the device; this and the next three are never part of a request. */
    unsigned short *sectionName; /**< The name of the section. */
    unsigned short *zoneName;    /**< The name of the zone. */
    unsigned short *domainName;  /**< The name of the domain of the user `userId`. */
} Event;

#ifdef __cplusplus
} /* namespace api */
} /* namespace tarnelLib */
#define TARNEL_STRUCT(name) tarnelLib::api::name
#define TARNEL_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define TARNEL_STRUCT(name) name
#define TARNEL_EXPORT __attribute__((visibility("default")))
#endif

/** @name Lifecycle
 * @{ */

/**
 * Starts the cache and runs it on the calling thread; returns when the cache has been exited.
 *
 * Opens "CacheDb" in the current directory, or makes it, readable and writable by its owner only. Returns at once, and
 * changes nothing, while a cache is running; waits for one that is on its way out. May be called again after an exit.
 */
TARNEL_EXPORT void launchCache(void);

/**
 * Ends the cache: waits for the calls in progress, closes the database and lets `launchCache` return.
 *
 * It may be called at any moment after `launchCache` was entered, and does nothing when no cache was launched.
 * `launchCache` returns soon after this function, not before it.
 */
TARNEL_EXPORT void exitCache(void);

/** The state of the cache, a `TarnelState`. Never waits. */
TARNEL_EXPORT unsigned int getState(void);

/**
 * How the launch found the database: TARNEL_SUCCESS, TARNEL_DATABASE_UNAVAILABLE or one of the codes 100 to 103;
 * TARNEL_NOT_AVAILABLE while the state is TARNEL_STATE_NONE. Never waits.
 *
 * After 101, 102 and 103 the new file has no tables: exit, delete "CacheDb", and launch again.
 */
TARNEL_EXPORT unsigned int getLaunchCacheResult(void);

/** @} */

/** @name Locales
 * @{ */

/**
 * Stores locales; each replaces the stored one of its identifier whole, and of two with one identifier the last stays.
 *
 * @param text    an "add" request, of `length` code units
 * @return TARNEL_SUCCESS; TARNEL_INVALID_REQUEST or TARNEL_INVALID_ARGUMENT (no JSON object, or no items) if the
 *         request is refused; TARNEL_WRITE_FAILED. Unless it is TARNEL_SUCCESS nothing was stored.
 */
TARNEL_EXPORT unsigned int addLocales(const unsigned short *text, unsigned int length);

/**
 * Reads one locale.
 *
 * @param locale  receives the locale, to be released with `freeLocale`; must point to null
 * @param id      its identifier
 * @return TARNEL_SUCCESS, TARNEL_NOT_FOUND, TARNEL_READ_FAILED, TARNEL_INVALID_ARGUMENT
 */
TARNEL_EXPORT unsigned int getLocale(TARNEL_STRUCT(Locale) **locale, unsigned int id);

/**
 * Reads all locales, in no particular order.
 *
 * @param locales  receives one block of locales, to be released with `freeLocalesArray`; must point to null
 * @param count    receives their number
 * @return TARNEL_SUCCESS, TARNEL_NOT_FOUND (there are none), TARNEL_READ_FAILED, TARNEL_INVALID_ARGUMENT
 */
TARNEL_EXPORT unsigned int getLocales(TARNEL_STRUCT(Locale) **locales, unsigned int *count);

/**
 * Reads the locales of which one field equals a value.
 *
 * @param locales  receives one block of locales, to be released with `freeLocalesArray`; must point to null
 * @param count    receives their number
 * @param field    the field's JSON key as given at `Locale`, of `fieldLength` code units
 * @param value    the value as text, numbers in decimal, of `valueLength` code units
 * @return TARNEL_SUCCESS, TARNEL_NOT_FOUND (none matches), TARNEL_READ_FAILED, TARNEL_INVALID_ARGUMENT (also for a
 *         field that locales do not have)
 */
TARNEL_EXPORT unsigned int getLocalesWithParams(TARNEL_STRUCT(Locale) **locales, unsigned int *count,
                                                const unsigned short *field, unsigned int fieldLength,
                                                const unsigned short *value, unsigned int valueLength);

/** Releases a locale that `getLocale` handed out. TARNEL_INVALID_ARGUMENT for a null pointer. */
TARNEL_EXPORT unsigned int freeLocale(TARNEL_STRUCT(Locale) *locale);

/** Releases a block of locales with its count. TARNEL_INVALID_ARGUMENT for a null pointer or a count of 0. */
TARNEL_EXPORT unsigned int freeLocalesArray(TARNEL_STRUCT(Locale) *locales, unsigned int count);

/** @} */

/** @name Domains
 * @{ */

/** Stores domains; as `addLocales`. */
TARNEL_EXPORT unsigned int addDomains(const unsigned short *text, unsigned int length);

/** Reads one domain with its locale, to be released with `freeDomain`; as `getLocale`. */
TARNEL_EXPORT unsigned int getDomain(TARNEL_STRUCT(Domain) **domain, unsigned int id);

/** Reads all domains with their locales, to be released with `freeDomainsArray`; as `getLocales`. */
TARNEL_EXPORT unsigned int getDomains(TARNEL_STRUCT(Domain) **domains, unsigned int *count);

/** Reads the domains of which one field ("id", "name", "org_id", "locale_id") equals a value; as
 * `getLocalesWithParams`. */
TARNEL_EXPORT unsigned int getDomainsWithParams(TARNEL_STRUCT(Domain) **domains, unsigned int *count,
                                                const unsigned short *field, unsigned int fieldLength,
                                                const unsigned short *value, unsigned int valueLength);

/**
 * Changes the fields that the request carries and leaves the others; stores the domain if it is new.
 *
 * @param domain  receives the domain as it is stored now, to be released with `freeDomain`; must point to null
 * @param text    an "update" request, of `length` code units
 * @return TARNEL_SUCCESS; TARNEL_INVALID_REQUEST or TARNEL_INVALID_ARGUMENT if the request is refused;
 *         TARNEL_WRITE_FAILED. After TARNEL_ALLOCATION_FAILED the change may have been stored.
 */
TARNEL_EXPORT unsigned int updateDomain(TARNEL_STRUCT(Domain) **domain, const unsigned short *text,
                                        unsigned int length);

/**
 * Deletes a domain. Users, devices and sites that name it stay as they are.
 *
 * @param text  a "delete" request with the identifier under "domain_id", of `length` code units. A value there that is
 *              no number reads as 0.
 * @return TARNEL_SUCCESS, TARNEL_NOT_FOUND, TARNEL_INVALID_REQUEST (no "domain_id"), TARNEL_INVALID_ARGUMENT,
 *         TARNEL_READ_FAILED, TARNEL_WRITE_FAILED
 */
TARNEL_EXPORT unsigned int deleteDomain(const unsigned short *text, unsigned int length);

/** Releases a domain with its locale; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeDomain(TARNEL_STRUCT(Domain) *domain);

/** Releases a block of domains; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeDomainsArray(TARNEL_STRUCT(Domain) *domains, unsigned int count);

/** @} */

/** @name Users
 * @{ */

/** Stores users; as `addLocales`. */
TARNEL_EXPORT unsigned int addUsers(const unsigned short *text, unsigned int length);

/** Reads one user with its domain and the domain's locale, to be released with `freeUser`; as `getLocale`. */
TARNEL_EXPORT unsigned int getUser(TARNEL_STRUCT(User) **user, unsigned int id);

/** Reads all users with their domains and the domains' locales, to be released with `freeUsersArray`; as
 * `getLocales`. */
TARNEL_EXPORT unsigned int getUsers(TARNEL_STRUCT(User) **users, unsigned int *count);

/** Reads the users of which one field equals a value; as `getLocalesWithParams`, with the JSON keys given at `User`. */
TARNEL_EXPORT unsigned int getUsersWithParams(TARNEL_STRUCT(User) **users, unsigned int *count,
                                              const unsigned short *field, unsigned int fieldLength,
                                              const unsigned short *value, unsigned int valueLength);

/** Changes the fields of a user that the request carries, and hands the user back; as `updateDomain`. */
TARNEL_EXPORT unsigned int updateUser(TARNEL_STRUCT(User) **user, const unsigned short *text, unsigned int length);

/** Deletes a user, named under "op_id"; as `deleteDomain`. Contracts that name it as operator stay as they are. */
TARNEL_EXPORT unsigned int deleteUser(const unsigned short *text, unsigned int length);

/** Releases a user with its domain; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeUser(TARNEL_STRUCT(User) *user);

/** Releases a block of users; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeUsersArray(TARNEL_STRUCT(User) *users, unsigned int count);

/** @} */

/** @name Organizations
 * @{ */

/** Stores organizations with their contacts; as `addLocales`. */
TARNEL_EXPORT unsigned int addOrganizations(const unsigned short *text, unsigned int length);

/** Reads one organization with its contact and locale, to be released with `freeOrganization`; as `getLocale`. */
TARNEL_EXPORT unsigned int getOrganization(TARNEL_STRUCT(Organization) **organization, unsigned int id);

/** Reads all organizations with their contacts and locales, to be released with `freeOrganizationsArray`; as
 * `getLocales`. */
TARNEL_EXPORT unsigned int getOrganizations(TARNEL_STRUCT(Organization) **organizations, unsigned int *count);

/** Reads the organizations of which one field equals a value; as `getLocalesWithParams`, with the JSON keys given at
 * `Organization`. */
TARNEL_EXPORT unsigned int getOrganizationsWithParams(TARNEL_STRUCT(Organization) **organizations, unsigned int *count,
                                                      const unsigned short *field, unsigned int fieldLength,
                                                      const unsigned short *value, unsigned int valueLength);

/** Changes the fields of an organization that the request carries, and hands it back; as `updateDomain`. A contact in
 * the request replaces the stored person of its identifier whole. */
TARNEL_EXPORT unsigned int updateOrganization(TARNEL_STRUCT(Organization) **organization, const unsigned short *text,
                                              unsigned int length);

/** Deletes an organization, named under "org_id"; as `deleteDomain`. Its contact is deleted with it, also if another
 * organization has the same one. */
TARNEL_EXPORT unsigned int deleteOrganization(const unsigned short *text, unsigned int length);

/** Releases an organization and all that it holds; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeOrganization(TARNEL_STRUCT(Organization) *organization);

/** Releases a block of organizations; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeOrganizationsArray(TARNEL_STRUCT(Organization) *organizations, unsigned int count);

/** @} */

/** @name Contractors
 * @{ */

/** Stores contractors; as `addLocales`. */
TARNEL_EXPORT unsigned int addContractors(const unsigned short *text, unsigned int length);

/** Reads one contractor, to be released with `freeContractor`; as `getLocale`. */
TARNEL_EXPORT unsigned int getContractor(TARNEL_STRUCT(Contractor) **contractor, unsigned int id);

/** Reads all contractors, to be released with `freeContractorsArray`; as `getLocales`. */
TARNEL_EXPORT unsigned int getContractors(TARNEL_STRUCT(Contractor) **contractors, unsigned int *count);

/** Reads the contractors of which one field equals a value; as `getLocalesWithParams`, with the JSON keys given at
 * `Contractor`. */
TARNEL_EXPORT unsigned int getContractorsWithParams(TARNEL_STRUCT(Contractor) **contractors, unsigned int *count,
                                                    const unsigned short *field, unsigned int fieldLength,
                                                    const unsigned short *value, unsigned int valueLength);

/** Changes the fields of a contractor that the request carries, and hands it back; as `updateDomain`. */
TARNEL_EXPORT unsigned int updateContractor(TARNEL_STRUCT(Contractor) **contractor, const unsigned short *text,
                                            unsigned int length);

/** Deletes a contractor, named under "id"; as `deleteDomain`. Contracts that name it stay as they are. */
TARNEL_EXPORT unsigned int deleteContractor(const unsigned short *text, unsigned int length);

/** Releases a contractor and all that it holds; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeContractor(TARNEL_STRUCT(Contractor) *contractor);

/** Releases a block of contractors; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeContractorsArray(TARNEL_STRUCT(Contractor) *contractors, unsigned int count);

/** @} */

/** @name Contracts
 * @{ */

/** Stores contracts; as `addLocales`. */
TARNEL_EXPORT unsigned int addContracts(const unsigned short *text, unsigned int length);

/** Reads one contract with its contractor and operator, to be released with `freeContract`; as `getLocale`. */
TARNEL_EXPORT unsigned int getContract(TARNEL_STRUCT(Contract) **contract, unsigned int id);

/** Reads all contracts with their contractors and operators, to be released with `freeContractsArray`; as
 * `getLocales`. */
TARNEL_EXPORT unsigned int getContracts(TARNEL_STRUCT(Contract) **contracts, unsigned int *count);

/** Reads the contracts of which one field equals a value; as `getLocalesWithParams`, with the JSON keys given at
 * `Contract`. */
TARNEL_EXPORT unsigned int getContractsWithParams(TARNEL_STRUCT(Contract) **contracts, unsigned int *count,
                                                  const unsigned short *field, unsigned int fieldLength,
                                                  const unsigned short *value, unsigned int valueLength);

/** Changes the fields of a contract that the request carries, and hands it back; as `updateDomain`. */
TARNEL_EXPORT unsigned int updateContract(TARNEL_STRUCT(Contract) **contract, const unsigned short *text,
                                          unsigned int length);

/** Deletes a contract, named under "id"; as `deleteDomain`. Sites that name it stay as they are. */
TARNEL_EXPORT unsigned int deleteContract(const unsigned short *text, unsigned int length);

/** Releases a contract and all that it holds; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeContract(TARNEL_STRUCT(Contract) *contract);

/** Releases a block of contracts; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeContractsArray(TARNEL_STRUCT(Contract) *contracts, unsigned int count);

/** @} */

/** @name Devices
 * @{ */

/**
 * Stores devices with all that is programmed into them; as `addLocales`.
 *
 * A section, zone or device user that is stored already is replaced whole; what is stored for a device and is not in
 * the request stays. Of two zones of one number in a device the last stays, whatever their sections.
 */
TARNEL_EXPORT unsigned int addDevices(const unsigned short *text, unsigned int length);

/**
 * Stores one device, as `addDevices` does, and hands it back as it is stored now.
 *
 * @param device  receives the device, to be released with `freeDevice`; must point to null
 * @param text    `{"D": device}`, of `length` code units
 * @return TARNEL_SUCCESS; TARNEL_INVALID_REQUEST or TARNEL_INVALID_ARGUMENT if the request is refused;
 *         TARNEL_WRITE_FAILED. After TARNEL_ALLOCATION_FAILED the device may have been stored.
 */
TARNEL_EXPORT unsigned int addDevice(TARNEL_STRUCT(Device) **device, const unsigned short *text, unsigned int length);

/** Reads one device with its domain, sections, zones and device users, to be released with `freeDevice`; as
 * `getLocale`. */
TARNEL_EXPORT unsigned int getDevice(TARNEL_STRUCT(Device) **device, unsigned int id);

/** Reads all devices with their domains, sections, zones and device users, to be released with `freeDevicesArray`; as
 * `getLocales`. */
TARNEL_EXPORT unsigned int getDevices(TARNEL_STRUCT(Device) **devices, unsigned int *count);

/** Reads the devices of which one field ("id", "account", "domain", "config_version", "parted") equals a value; as
 * `getLocalesWithParams`. */
TARNEL_EXPORT unsigned int getDevicesWithParams(TARNEL_STRUCT(Device) **devices, unsigned int *count,
                                                const unsigned short *field, unsigned int fieldLength,
                                                const unsigned short *value, unsigned int valueLength);

/** Sets the configuration version of a stored device ("id", "config_version"; none empties it), changes nothing else,
 * and hands the device back; as `updateDomain`, but TARNEL_NOT_FOUND for a device that is not stored. */
TARNEL_EXPORT unsigned int updateDeviceFw(TARNEL_STRUCT(Device) **device, const unsigned short *text,
                                          unsigned int length);

/** Deletes a device, named under "id"; as `deleteDomain`. Its sections, zones, device users and their section lists are
 * deleted with it; its events stay. */
TARNEL_EXPORT unsigned int deleteDevice(const unsigned short *text, unsigned int length);

/** Releases a device and all that it holds; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeDevice(TARNEL_STRUCT(Device) *device);

/** Releases a block of devices; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeDevicesArray(TARNEL_STRUCT(Device) *devices, unsigned int count);

/** @} */

/** @name Sections
 * @{ */

/** Reads one section of a device with its zones, to be released with `freeSection`; as `getLocale`. */
TARNEL_EXPORT unsigned int getSection(TARNEL_STRUCT(Section) **section, unsigned int device, unsigned int id);

/** Reads the sections of a device with their zones, to be released with `freeSectionsArray`; as `getLocales`. */
TARNEL_EXPORT unsigned int getSections(TARNEL_STRUCT(Section) **sections, unsigned int *count, unsigned int device);

/** Reads the sections of a device of which one field equals a value; as `getLocalesWithParams`, with the JSON keys
 * given at `Section` except "zones". */
TARNEL_EXPORT unsigned int getSectionsWithParams(TARNEL_STRUCT(Section) **sections, unsigned int *count,
                                                 const unsigned short *field, unsigned int fieldLength,
                                                 const unsigned short *value, unsigned int valueLength,
                                                 unsigned int device);

/**
 * Changes the fields of a section that the request carries; stores the section if it is new. Zones in it are not
 * stored.
 *
 * @param section  receives the section as it is stored now, to be released with `freeSection`; must point to null
 * @param text     an "update" request, which names the device under "device" and the section under "id" or "section",
 *                 of `length` code units
 * @return TARNEL_SUCCESS; TARNEL_INVALID_REQUEST or TARNEL_INVALID_ARGUMENT if the request is refused;
 *         TARNEL_WRITE_FAILED; TARNEL_PARENT_NOT_FOUND if the device is not in the cache, and TARNEL_READ_FAILED if
 *         that could not be told: with these two the section is stored, and not handed out. After
 *         TARNEL_ALLOCATION_FAILED the change may have been stored.
 */
TARNEL_EXPORT unsigned int updateSection(TARNEL_STRUCT(Section) **section, const unsigned short *text,
                                         unsigned int length);

/** Deletes a section, named under "device" and "section", with its zones and its place in the lists of device users; as
 * `deleteDomain`. */
TARNEL_EXPORT unsigned int deleteSection(const unsigned short *text, unsigned int length);

/** Releases a section with its zones; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeSection(TARNEL_STRUCT(Section) *section);

/** Releases a block of sections; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeSectionsArray(TARNEL_STRUCT(Section) *sections, unsigned int count);

/** @} */

/** @name Zones
 * @{ */

/** Reads one zone of a section of a device, to be released with `freeZone`; as `getLocale`. */
TARNEL_EXPORT unsigned int getZone(TARNEL_STRUCT(Zone) **zone, unsigned int device, unsigned int section,
                                   unsigned int id);

/** Reads the zones of a device, to be released with `freeZonesArray`; as `getLocales`. */
TARNEL_EXPORT unsigned int getZones(TARNEL_STRUCT(Zone) **zones, unsigned int *count, unsigned int device);

/** Reads the zones of a device of which one field equals a value; as `getLocalesWithParams`, with the JSON keys given
 * at `Zone`. */
TARNEL_EXPORT unsigned int getZonesWithParams(TARNEL_STRUCT(Zone) **zones, unsigned int *count,
                                              const unsigned short *field, unsigned int fieldLength,
                                              const unsigned short *value, unsigned int valueLength,
                                              unsigned int device);

/** Reads the zones of a section of a device; as `getZones`. */
TARNEL_EXPORT unsigned int getZonesForSection(TARNEL_STRUCT(Zone) **zones, unsigned int *count, unsigned int device,
                                              unsigned int section);

/** Reads the zones of a section of a device of which one field equals a value; as `getZonesWithParams`. */
TARNEL_EXPORT unsigned int getZonesForSectionWithParams(TARNEL_STRUCT(Zone) **zones, unsigned int *count,
                                                        const unsigned short *field, unsigned int fieldLength,
                                                        const unsigned short *value, unsigned int valueLength,
                                                        unsigned int device, unsigned int section);

/**
 * Changes the fields of a zone that the request carries, and its section; stores the zone if it is new. As
 * `updateSection`, with the device under "device", the section under "section" and the zone under "id" or "zone".
 *
 * TARNEL_PARENT_NOT_FOUND if the section or the device is not in the cache.
 */
TARNEL_EXPORT unsigned int updateZone(TARNEL_STRUCT(Zone) **zone, const unsigned short *text, unsigned int length);

/** Deletes a zone, named under "device", "section" and "zone"; as `deleteDomain`. */
TARNEL_EXPORT unsigned int deleteZone(const unsigned short *text, unsigned int length);

/** Releases a zone; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeZone(TARNEL_STRUCT(Zone) *zone);

/** Releases a block of zones; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeZonesArray(TARNEL_STRUCT(Zone) *zones, unsigned int count);

/** @} */

/** @name Sites
 * @{ */

/** Stores sites with their locations and devices (see `addDevices`); as `addLocales`. */
TARNEL_EXPORT unsigned int addSites(const unsigned short *text, unsigned int length);

/** Reads one site with its domain, contract and location, to be released with `freeSite`; as `getLocale`. */
TARNEL_EXPORT unsigned int getSite(TARNEL_STRUCT(Site) **site, unsigned int id);

/** Reads all sites with their domains, contracts and locations, to be released with `freeSitesArray`; as
 * `getLocales`. */
TARNEL_EXPORT unsigned int getSites(TARNEL_STRUCT(Site) **sites, unsigned int *count);

/** Reads the sites of which one field equals a value; as `getLocalesWithParams`, with the JSON keys given at `Site`
 * except "location" and "devices". */
TARNEL_EXPORT unsigned int getSitesWithParams(TARNEL_STRUCT(Site) **sites, unsigned int *count,
                                              const unsigned short *field, unsigned int fieldLength,
                                              const unsigned short *value, unsigned int valueLength);

/**
 * Reads the name and the address of a site.
 *
 * @param name     receives the name, or null if the site has none; to be released with `free`; must point to null
 * @param address  receives the address in the same way
 * @return TARNEL_SUCCESS, TARNEL_NOT_FOUND, TARNEL_READ_FAILED, TARNEL_INVALID_ARGUMENT
 */
TARNEL_EXPORT unsigned int getSiteNameAndAddress(unsigned short **name, unsigned short **address, unsigned int id);

/** Changes the fields of a site that the request carries, and hands it back; as `updateDomain`. A location replaces the
 * stored one whole; devices in the request are not stored. */
TARNEL_EXPORT unsigned int updateSite(TARNEL_STRUCT(Site) **site, const unsigned short *text, unsigned int length);

/** Deletes a site, named under "site_id"; as `deleteDomain`. Its location is deleted with it; its devices, contract and
 * events stay. */
TARNEL_EXPORT unsigned int deleteSite(const unsigned short *text, unsigned int length);

/** Releases a site and all that it holds; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeSite(TARNEL_STRUCT(Site) *site);

/** Releases a block of sites; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeSitesArray(TARNEL_STRUCT(Site) *sites, unsigned int count);

/** @} */

/** @name Events
 * @{ */

/** Stores one event, in place of a stored one of its identifier, and hands it back with what its device, section, zone
 * and operator lend it; as `addDevice`. */
TARNEL_EXPORT unsigned int addEvent(TARNEL_STRUCT(Event) **event, const unsigned short *text, unsigned int length);

/**
 * Stores events, and hands back those of them whose device is in the cache, in the order of their identifiers.
 *
 * @param events  receives one block of events, to be released with `freeEventsArray`; must point to null
 * @param count   receives their number
 * @param text    an "add" request, of `length` code units
 * @return TARNEL_SUCCESS; TARNEL_NOT_FOUND if the events are stored and the device of none of them is in the cache;
 *         TARNEL_INVALID_REQUEST or TARNEL_INVALID_ARGUMENT if the request is refused; TARNEL_WRITE_FAILED. After
 *         TARNEL_ALLOCATION_FAILED the events may have been stored.
 */
TARNEL_EXPORT unsigned int addEvents(TARNEL_STRUCT(Event) **events, unsigned int *count, const unsigned short *text,
                                     unsigned int length);

/** Reads the events of a range of time, both ends included, whose device is in the cache; as `getLocales`. */
TARNEL_EXPORT unsigned int getEvents(TARNEL_STRUCT(Event) **events, unsigned int *count, unsigned int from,
                                     unsigned int to);

/** Reads the events whose affect flag is set and whose device is in the cache; as `getLocales`. */
TARNEL_EXPORT unsigned int getAffectEvents(TARNEL_STRUCT(Event) **events, unsigned int *count);

/**
 * Takes the affect flag from an event, which from then on is pruned like any other.
 *
 * @param event  receives the event as it is stored now, to be released with `freeEvent`. Unlike elsewhere it may
 *               point to a structure, whose block is released with `free` on success, without what its members point
 *               to.
 * @param text   `{"D": {"id": number}}`, of `length` code units. A value there that is no number reads as 0.
 * @return TARNEL_SUCCESS, TARNEL_NOT_FOUND, TARNEL_INVALID_REQUEST, TARNEL_INVALID_ARGUMENT, TARNEL_READ_FAILED,
 *         TARNEL_WRITE_FAILED
 */
TARNEL_EXPORT unsigned int removeAffectFlag(TARNEL_STRUCT(Event) **event, const unsigned short *text,
                                            unsigned int length);

/** Releases an event; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeEvent(TARNEL_STRUCT(Event) *event);

/** Releases a block of events; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeEventsArray(TARNEL_STRUCT(Event) *events, unsigned int count);

/** @} */

/** @name Maintenance
 * @{ */

/** Stores the address of the client's server, of any form; it survives every clear. TARNEL_SUCCESS,
 * TARNEL_WRITE_FAILED, TARNEL_INVALID_ARGUMENT. */
TARNEL_EXPORT unsigned int setServerIp(const unsigned short *address, unsigned int length);

/**
 * Reads the address of the client's server.
 *
 * @param address  receives the address, to be released with `free`; stays null if there is none, or an empty one; must
 *                 point to null
 * @return TARNEL_SUCCESS, TARNEL_READ_FAILED, TARNEL_INVALID_ARGUMENT
 */
TARNEL_EXPORT unsigned int getServerIp(unsigned short **address);

/** Deletes all records. TARNEL_SUCCESS or TARNEL_WRITE_FAILED, and then nothing was deleted. */
TARNEL_EXPORT unsigned int clearAll(void);

/** Deletes all records but the events; as `clearAll`. */
TARNEL_EXPORT unsigned int clearAllExceptEvents(void);

/** Deletes the events whose time is `date` or before and whose affect flag is stored and not set; as `clearAll`. */
TARNEL_EXPORT unsigned int clearEventsBeforeDateExceptAffects(unsigned int date);

/** @} */

#undef TARNEL_STRUCT
#undef TARNEL_EXPORT

#endif
