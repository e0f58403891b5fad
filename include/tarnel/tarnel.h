/**
 * TarnelLib: a local, persistent cache of the reference data of a monitoring and alarm-response service.
 *
 * Plain C. In C++ the structures live in namespace `tarnelLib::api`, the functions in the global namespace.
 *
 * How it is used
 *   A thread of the client calls `launchCache` and stays in it. Once `getState` says TARNEL_STATE_RUNNING, records are
 *   pushed in as JSON and read back as structures, from any thread; `exitCache` ends the launching thread's call. The
 *   records are kept in the SQLite file "CacheDb" in the current directory of the process, which should be a local
 * disk.
 *
 * Texts
 *   Every text is UTF-16 in the byte order of the machine. One that goes in is a pointer and its number of 16-bit code
 *   units, and needs no terminator; a null pointer is an empty text if the length is 0. One that comes out ends with a
 *   zero code unit.
 *
 * Requests
 *   A request is a JSON object whose member "D" is an object: the record itself ("update"), `{"items": [record, ...]}`
 *   ("add"), or the identifier under the key that the function names ("delete"). A record's identifier is required;
 *   any other field may be left out, but must not be null or of another type than the one given at the structure.
 *   Numbers for unsigned fields are cut to a whole number and then to their low 32 bits. A flag is set by the number 1:
 *   the JSON values `true` and `false` are both stored as false. A request is carried out whole or not at all.
 *
 * Ownership
 *   An output pointer must point to a null pointer on entry, or nothing is done (TARNEL_INVALID_ARGUMENT). What is
 *   handed out was made with `malloc`, belongs to the caller, and is released by the kind's free functions alone.
 *   A null member is a field that the record does not have. On any failure the outputs stay as they were.
 *
 * Threads
 *   Any function may be called from any thread; calls that touch the records are carried out one after another.
 *   `getState` and `getLaunchCacheResult` never wait for them. The free functions take no lock at all.
 *   In the child of a `fork` a cache inherited from the parent is not available.
 *
 * Codes
 *   Every function returns a `TarnelResult` unless it says otherwise. Each that needs the cache can return
 *   TARNEL_NOT_AVAILABLE (no cache is running) and TARNEL_ALLOCATION_FAILED; these two are not repeated below.
 *   A failure of the database is also written to Qt's debug log, with the text of SQLite.
 *
 * Qt
 *   The cache registers two Qt SQL connections, named "" and "CacheDb": a client that uses Qt SQL itself must name its
 *   own otherwise. A client that has a Qt application object makes it before `launchCache` and keeps it until the
 *   launch has ended; otherwise the cache makes one.
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
namespace tarnelLib
{
namespace api
{
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

#ifdef __cplusplus
} /* namespace api */
} /* namespace tarnelLib */
#define TARNEL_STRUCT(name) tarnelLib::api::name
#define TARNEL_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define TARNEL_STRUCT(name) name
#define TARNEL_EXPORT __attribute__((visibility("default")))
#endif

/* ---- Lifecycle ------------------------------------------------------------------------------------------------- */

/**
 * Starts the cache and runs it on the calling thread; returns when the cache has been exited.
 *
 * Opens "CacheDb" in the current directory, or makes it, readable and writable by its owner only. Returns at once, and
 * changes nothing, while a cache is running; waits for one that is on its way out. May be called again after an exit.
 */
TARNEL_EXPORT void launchCache(void);

/**
 * Ends the cache: waits for the call in progress, closes the database and lets `launchCache` return.
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

/* ---- Locales --------------------------------------------------------------------------------------------------- */

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
TARNEL_EXPORT unsigned int getLocale(TARNEL_STRUCT(Locale) * *locale, unsigned int id);

/**
 * Reads all locales, in no particular order.
 *
 * @param locales  receives one block of locales, to be released with `freeLocalesArray`; must point to null
 * @param count    receives their number
 * @return TARNEL_SUCCESS, TARNEL_NOT_FOUND (there are none), TARNEL_READ_FAILED, TARNEL_INVALID_ARGUMENT
 */
TARNEL_EXPORT unsigned int getLocales(TARNEL_STRUCT(Locale) * *locales, unsigned int *count);

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
TARNEL_EXPORT unsigned int getLocalesWithParams(TARNEL_STRUCT(Locale) * *locales, unsigned int *count,
                                                const unsigned short *field, unsigned int fieldLength,
                                                const unsigned short *value, unsigned int valueLength);

/** Releases a locale that `getLocale` handed out. TARNEL_INVALID_ARGUMENT for a null pointer. */
TARNEL_EXPORT unsigned int freeLocale(TARNEL_STRUCT(Locale) * locale);

/** Releases a block of locales with its count. TARNEL_INVALID_ARGUMENT for a null pointer or a count of 0. */
TARNEL_EXPORT unsigned int freeLocalesArray(TARNEL_STRUCT(Locale) * locales, unsigned int count);

/* ---- Domains --------------------------------------------------------------------------------------------------- */

/** Stores domains; as `addLocales`. */
TARNEL_EXPORT unsigned int addDomains(const unsigned short *text, unsigned int length);

/** Reads one domain with its locale, to be released with `freeDomain`; as `getLocale`. */
TARNEL_EXPORT unsigned int getDomain(TARNEL_STRUCT(Domain) * *domain, unsigned int id);

/** Reads all domains with their locales, to be released with `freeDomainsArray`; as `getLocales`. */
TARNEL_EXPORT unsigned int getDomains(TARNEL_STRUCT(Domain) * *domains, unsigned int *count);

/** Reads the domains of which one field ("id", "name", "org_id", "locale_id") equals a value; as
 * `getLocalesWithParams`. */
TARNEL_EXPORT unsigned int getDomainsWithParams(TARNEL_STRUCT(Domain) * *domains, unsigned int *count,
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
TARNEL_EXPORT unsigned int updateDomain(TARNEL_STRUCT(Domain) * *domain, const unsigned short *text,
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
TARNEL_EXPORT unsigned int freeDomain(TARNEL_STRUCT(Domain) * domain);

/** Releases a block of domains; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeDomainsArray(TARNEL_STRUCT(Domain) * domains, unsigned int count);

/* ---- Users ----------------------------------------------------------------------------------------------------- */

/** Stores users; as `addLocales`. */
TARNEL_EXPORT unsigned int addUsers(const unsigned short *text, unsigned int length);

/** Reads one user with its domain and the domain's locale, to be released with `freeUser`; as `getLocale`. */
TARNEL_EXPORT unsigned int getUser(TARNEL_STRUCT(User) * *user, unsigned int id);

/** Reads all users with their domains, to be released with `freeUsersArray`; as `getLocales`. */
TARNEL_EXPORT unsigned int getUsers(TARNEL_STRUCT(User) * *users, unsigned int *count);

/** Reads the users of which one field equals a value; as `getLocalesWithParams`, with the JSON keys given at `User`. */
TARNEL_EXPORT unsigned int getUsersWithParams(TARNEL_STRUCT(User) * *users, unsigned int *count,
                                              const unsigned short *field, unsigned int fieldLength,
                                              const unsigned short *value, unsigned int valueLength);

/** Changes the fields of a user that the request carries, and hands the user back; as `updateDomain`. */
TARNEL_EXPORT unsigned int updateUser(TARNEL_STRUCT(User) * *user, const unsigned short *text, unsigned int length);

/** Deletes a user, named under "op_id"; as `deleteDomain`. Contracts that name it as operator stay as they are. */
TARNEL_EXPORT unsigned int deleteUser(const unsigned short *text, unsigned int length);

/** Releases a user with its domain; as `freeLocale`. */
TARNEL_EXPORT unsigned int freeUser(TARNEL_STRUCT(User) * user);

/** Releases a block of users; as `freeLocalesArray`. */
TARNEL_EXPORT unsigned int freeUsersArray(TARNEL_STRUCT(User) * users, unsigned int count);

#undef TARNEL_STRUCT
#undef TARNEL_EXPORT

#endif
