/*
 * A client in C: fills a new cache, reads the last hundred events, changes a site, and starts the cache again.
 *
 *     cc client.c -o client $(pkg-config --cflags --libs tarnel) -pthread && ./client
 *
 * It leaves the file "CacheDb" in the current directory; a second run finds the records there.
 */
#define _POSIX_C_SOURCE 200809L

#include <tarnel/diagnostics.h>
#include <tarnel/tarnel.h>

#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

enum { SITES = 5000, EVENTS = 50000, SLICE = 10000, LONGEST_PART = 100 };

/* A request, in UTF-16 as the library takes it. */
static unsigned short request[SLICE * LONGEST_PART];
static unsigned int length;

/* Adds a part to the request, which has characters of ASCII alone. */
static void append(const char *format, ...)
{
    char part[LONGEST_PART];
    va_list values;
    va_start(values, format);
    vsnprintf(part, sizeof part, format, values);
    va_end(values);
    for (const char *c = part; *c != 0; ++c)
        request[length++] = (unsigned char)*c;
}

static void beginItems(void)
{
    length = 0;
    append("{\"D\":{\"items\":[");
}

/* Ends the program if a call went wrong. */
static void check(const char *call, unsigned int code)
{
    if (code == TARNEL_SUCCESS)
        return;
    fprintf(stderr, "%s: %s: %s\n", call, tarnelCodeName(code), tarnelReason());
    exit(1);
}
#define CHECK(call) check(#call, call)

/* Prints a UTF-16 text as UTF-8. */
static void printText(const unsigned short *text)
{
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
}

/* The thread that is given to the cache: it stays in the launch until the exit. */
static void *runCache(void *unused)
{
    launchCache();
    return unused;
}

static pthread_t start(void)
{
    const struct timespec pause = {0, 1000000};
    pthread_t thread;
    if (pthread_create(&thread, NULL, runCache, NULL) != 0)
        exit(1);
    while (getState() != TARNEL_STATE_RUNNING)
        nanosleep(&pause, NULL);
    /* What there is to do about the others, their advice says. */
    const unsigned int result = getLaunchCacheResult();
    if (result != TARNEL_SUCCESS && result != TARNEL_DATABASE_CREATED) {
        fprintf(stderr, "%s: %s\n", tarnelCodeName(result), tarnelCodeAdvice(result));
        exit(1);
    }
    return thread;
}

static void stop(pthread_t thread)
{
    exitCache();
    pthread_join(thread, NULL);
}

static void fill(void)
{
    beginItems();
    for (int i = 1; i <= SITES; ++i)
        append("%s{\"id\":%d,\"devices\":[{\"id\":%d,\"sections\":[{\"id\":1,\"name\":\"Vault\"}]}]}", i > 1 ? "," : "",
               i, i);
    append("]}}");
    CHECK(addSites(request, length));

    for (int stored = 0; stored < EVENTS; stored += SLICE) {
        beginItems();
        for (int i = stored + 1; i <= stored + SLICE; ++i)
            append("%s{\"id\":%d,\"time\":%d,\"device\":%d,\"section\":1}", i > stored + 1 ? "," : "", i, i,
                   i % SITES + 1);
        append("]}}");
        /* An output pointer must be null before the call; what it gets is released by the kind's free function. */
        Event *events = NULL;
        unsigned int count = 0;
        CHECK(addEvents(&events, &count, request, length));
        CHECK(freeEventsArray(events, count));
        printf("%d events\n", stored + SLICE);
    }
}

static void showLast(void)
{
    Event *events = NULL;
    unsigned int count = 0;
    CHECK(getEvents(&events, &count, EVENTS - 99, EVENTS));
    for (unsigned int i = 0; i < count; ++i) {
        printf("event %u: ", events[i].id);
        printText(events[i].sectionName);
        putchar('\n');
    }
    CHECK(freeEventsArray(events, count));
}

int main(void)
{
    /* With structures of another layout, what is read would be garbage. */
    CHECK(tarnelCheckVersion(TARNEL_VERSION, TARNEL_LAYOUT));

    pthread_t cache = start();
    if (getLaunchCacheResult() == TARNEL_DATABASE_CREATED)
        fill();
    showLast();

    const unsigned short change[] = u"{\"D\":{\"id\":7,\"name\":\"S\u00FCdtor\",\"delegated\":1}}";
    Site *site = NULL;
    CHECK(updateSite(&site, change, sizeof change / sizeof *change - 1));
    printText(site->name);
    puts(site->isDelegated != NULL && *site->isDelegated ? ", delegated" : "");
    CHECK(freeSite(site));
    site = NULL;

    stop(cache);
    cache = start();
    CHECK(getSite(&site, 7));
    printText(site->name);
    putchar('\n');
    CHECK(freeSite(site));
    stop(cache);
    return 0;
}
