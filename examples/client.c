/*
 * A client in C: starts the cache, fills it, asks it, changes it, and ends it.
 *
 *     cc client.c -o client $(pkg-config --cflags --libs tarnel) -pthread && ./client
 *
 * It leaves the file "CacheDb" in the current directory; a second run finds the records there.
 */
#define _POSIX_C_SOURCE 200809L

#include <tarnel/tarnel.h>

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

/* Both arguments that the library takes for a text: its UTF-16 code units and their number. */
#define TEXT(literal) (const unsigned short *)u##literal, (unsigned int)(sizeof(u##literal) / 2 - 1)

/* Ends the program, with the code of the call that went wrong. */
static void expect(unsigned int expected, unsigned int code, const char *call)
{
    if (code == expected)
        return;
    fprintf(stderr, "%s returned %u instead of %u\n", call, code, expected);
    exit(1);
}
#define EXPECT(expected, call) expect(expected, call, #call)

/* Prints a UTF-16 text as UTF-8. */
static void printText(const char *label, const unsigned short *text)
{
    printf("  %s: ", label);
    for (; text != NULL && *text != 0; ++text) {
        unsigned long c = *text;
        if (c >= 0xD800 && c < 0xDC00 && text[1] != 0)
            c = 0x10000 + ((c - 0xD800) << 10) + (*++text - 0xDC00UL);
        if (c < 0x80) {
            putchar((int)c);
            continue;
        }
        if (c < 0x800)
            putchar((int)(0xC0 | c >> 6));
        else if (c < 0x10000)
            printf("%c%c", (int)(0xE0 | c >> 12), (int)(0x80 | (c >> 6 & 0x3F)));
        else
            printf("%c%c%c", (int)(0xF0 | c >> 18), (int)(0x80 | (c >> 12 & 0x3F)), (int)(0x80 | (c >> 6 & 0x3F)));
        putchar((int)(0x80 | (c & 0x3F)));
    }
    putchar('\n');
}

/* The thread that is given to the cache: it stays in the launch until the exit. */
static void *runCache(void *unused)
{
    launchCache();
    return unused;
}

static void waitForCache(void)
{
    const struct timespec pause = {0, 1000000};
    while (getState() != TARNEL_STATE_RUNNING)
        nanosleep(&pause, NULL);
    printf("launch result: %u\n", getLaunchCacheResult());
}

static void fill(void)
{
    EXPECT(TARNEL_SUCCESS, addLocales(TEXT("{\"D\":{\"items\":["
                                           "{\"id\":1,\"iso\":\"de\",\"description\":\"Deutsch \u00F6\"},"
                                           "{\"id\":2,\"iso\":\"ka\",\"description\":\"\u10E5\u10D0\u10E0\"}]}}")));
    EXPECT(TARNEL_SUCCESS, addDomains(TEXT("{\"D\":{\"items\":[{\"id\":5,\"name\":\"North\",\"locale_id\":1},"
                                           "{\"id\":6,\"name\":\"South\",\"locale_id\":2}]}}")));
    EXPECT(TARNEL_SUCCESS, addUsers(TEXT("{\"D\":{\"items\":["
                                         "{\"id\":10,\"name\":\"Ada \U0001F511\",\"active\":1,\"domain\":5},"
                                         "{\"id\":11,\"name\":\"Bo\",\"domain\":5},"
                                         "{\"id\":12,\"name\":\"Cy\",\"domain\":6}]}}")));
}

/* An output pointer must be null before the call; what the call hands out is released by the kind's free function. */
static void readOne(void)
{
    User *user = NULL;
    EXPECT(TARNEL_SUCCESS, getUser(&user, 10));
    printf("user %u\n", user->id);
    printText("name", user->name);
    if (user->domain != NULL && user->domain->locale != NULL)
        printText("locale", user->domain->locale->description);
    EXPECT(TARNEL_SUCCESS, freeUser(user));
}

static void readAll(void)
{
    Locale *locales = NULL;
    unsigned int count = 0;
    EXPECT(TARNEL_SUCCESS, getLocales(&locales, &count));
    printf("%u locales\n", count);
    EXPECT(TARNEL_SUCCESS, freeLocalesArray(locales, count));
}

static void filter(unsigned int expected)
{
    User *users = NULL;
    unsigned int count = 0;
    EXPECT(TARNEL_SUCCESS, getUsersWithParams(&users, &count, TEXT("domain"), TEXT("5")));
    printf("%u users of domain 5\n", count);
    expect(expected, count, "the filter");
    for (unsigned int i = 0; i < count; ++i)
        printText("name", users[i].name);
    EXPECT(TARNEL_SUCCESS, freeUsersArray(users, count));
}

/* Fields that an update does not carry keep their values. */
static void change(void)
{
    Domain *domain = NULL;
    User *user = NULL;
    EXPECT(TARNEL_SUCCESS, updateDomain(&domain, TEXT("{\"D\":{\"id\":5,\"name\":\"North-East\"}}")));
    printf("domain %u, locale %u\n", domain->id, domain->locale->id);
    printText("name", domain->name);
    EXPECT(TARNEL_SUCCESS, freeDomain(domain));

    EXPECT(TARNEL_SUCCESS, deleteUser(TEXT("{\"D\":{\"op_id\":11}}")));
    EXPECT(TARNEL_NOT_FOUND, getUser(&user, 11));
    EXPECT(TARNEL_SUCCESS, deleteDomain(TEXT("{\"D\":{\"domain_id\":6}}")));
}

int main(void)
{
    pthread_t cacheThread;
    if (pthread_create(&cacheThread, NULL, runCache, NULL) != 0)
        return 1;
    waitForCache();
    fill();
    readOne();
    readAll();
    filter(2);
    change();
    filter(1);
    exitCache();
    pthread_join(cacheThread, NULL);
    return 0;
}
