/** @file
 * Why a call failed, what a code means, and whether this header fits the library: for clients that want to know more
 * than the codes of tarnel.h.
 *
 * Texts are UTF-8, end with a zero byte, and belong to the library. No function here needs a running cache, changes
 * one, or waits.
 */
#ifndef TARNEL_DIAGNOSTICS_H
#define TARNEL_DIAGNOSTICS_H

#include <tarnel/tarnel.h>

/** The version of this header. */
#define TARNEL_VERSION_MAJOR 0
#define TARNEL_VERSION_MINOR 1
#define TARNEL_VERSION_PATCH 0
/** The same as one number, which grows with the versions: 10203 is 1.2.3. */
#define TARNEL_VERSION (TARNEL_VERSION_MAJOR * 10000 + TARNEL_VERSION_MINOR * 100 + TARNEL_VERSION_PATCH)

#ifdef __cplusplus
#define TARNEL_SIZE(structure) sizeof(tarnelLib::api::structure)
#define TARNEL_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define TARNEL_SIZE(structure) sizeof(structure)
#define TARNEL_EXPORT __attribute__((visibility("default")))
#endif

/** A number for the sizes of all structures as this client's compiler lays them out. */
#define TARNEL_LAYOUT                                                                                                  \
    ((unsigned int)(TARNEL_SIZE(Locale) * 3u + TARNEL_SIZE(Domain) * 5u + TARNEL_SIZE(User) * 7u +                     \
                    TARNEL_SIZE(Person) * 11u + TARNEL_SIZE(Organization) * 13u + TARNEL_SIZE(Contractor) * 17u +      \
                    TARNEL_SIZE(Contract) * 19u + TARNEL_SIZE(Zone) * 23u + TARNEL_SIZE(Section) * 29u +               \
                    TARNEL_SIZE(DeviceUser) * 31u + TARNEL_SIZE(Device) * 37u + TARNEL_SIZE(Location) * 41u +          \
                    TARNEL_SIZE(Site) * 43u + TARNEL_SIZE(Event) * 47u))

/** The version of the library that runs, as TARNEL_VERSION is that of the header. */
TARNEL_EXPORT unsigned int tarnelVersion(void);

/**
 * Whether a client that was compiled with a header of this version and layout may call the library that runs. Called
 * once, before `launchCache`, as `tarnelCheckVersion(TARNEL_VERSION, TARNEL_LAYOUT)`: with structures of another layout
 * a client would read garbage.
 *
 * @return TARNEL_SUCCESS; TARNEL_INVALID_ARGUMENT if they do not fit, and `tarnelReason` says why
 */
TARNEL_EXPORT unsigned int tarnelCheckVersion(unsigned int version, unsigned int layout);

/**
 * Why the calling thread's last failed call failed, such as "addUsers: items[3776].name: null, a string is expected";
 * empty if none has failed. A call that succeeds leaves it as it is. The text is valid until the thread's next call.
 *
 * A failed call is one that returned any code but TARNEL_SUCCESS, and TARNEL_DATABASE_UNAVAILABLE of
 * `getLaunchCacheResult`: there each thread that asks finds why the launch had no database. A text that is no JSON is
 * named with the line of its first error, from 1, and with how many 16-bit units stand before it. Where the database
 * failed, it is the line that is also logged. What comes from a request stands there shortened, with a number for each
 * control character ("<U+1b>"): it can be shown anywhere.
 */
TARNEL_EXPORT const char *tarnelReason(void);

/** The name of a code, such as "TARNEL_NOT_FOUND"; empty for a number that is none. */
TARNEL_EXPORT const char *tarnelCodeName(unsigned int code);

/** What a client does about a code, in a sentence; empty for a number that is none. */
TARNEL_EXPORT const char *tarnelCodeAdvice(unsigned int code);

/**
 * How many values that look like mistakes were stored since the launch: those about which the log category
 * "tarnel.requests" warns, of each sort for each key the first time. All are counted here.
 */
TARNEL_EXPORT unsigned int tarnelSuspicions(void);

#undef TARNEL_EXPORT

#endif
