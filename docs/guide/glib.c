/* A program with GLib's main loop, which is GTK's as well: the cache on a thread of its own. */
#include <glib.h>
#include <tarnel/diagnostics.h>

static int status = 1;

/* Called once the cache runs. */
static void onRunning(void)
{
    static const char request[] = "{\"D\": {\"items\": [{\"id\": 7, \"name\": \"Ада\"}]}}";
    /* [texts] */
    glong length = 0;
    gunichar2 *text = g_utf8_to_utf16(request, -1, NULL, &length, NULL);
    const unsigned int added = addUsers(text, (unsigned int)length);
    g_free(text);
    if (added != TARNEL_SUCCESS)
        g_warning("%s", tarnelReason());

    User *user = NULL; /* An output must be null. */
    if (getUser(&user, 7) == TARNEL_SUCCESS) {
        char *name = g_utf16_to_utf8(user->name, -1, NULL, NULL, NULL);
        g_print("%s\n", name);
        status = g_strcmp0(name, "Ада");
        g_free(name);
        freeUser(user);
    }
    /* [texts] */
}

/* [start] */
static gpointer runCache(gpointer unused)
{
    launchCache(); /* Stays there until the exit. */
    return unused;
}

/* Looks every 20 milliseconds whether the cache runs, and lets the main loop go on meanwhile. */
static gboolean whenLaunched(gpointer loop)
{
    if (getState() != TARNEL_STATE_RUNNING)
        return G_SOURCE_CONTINUE;
    const unsigned int result = getLaunchCacheResult();
    if (result == TARNEL_SUCCESS || result == TARNEL_DATABASE_CREATED)
        onRunning();
    else
        g_warning("%s: %s", tarnelCodeName(result), tarnelCodeAdvice(result));
    g_main_loop_quit((GMainLoop *)loop); /* In a program with windows: when the last one is closed. */
    return G_SOURCE_REMOVE;
}

int main(void)
{
    if (tarnelCheckVersion(TARNEL_VERSION, TARNEL_LAYOUT) != TARNEL_SUCCESS)
        g_error("%s", tarnelReason());
    GThread *thread = g_thread_new("cache", runCache, NULL);
    GMainLoop *loop = g_main_loop_new(NULL, FALSE);
    g_timeout_add(20, whenLaunched, loop);
    g_main_loop_run(loop);

    exitCache(); /* The launch was entered long ago: the cache has run. */
    g_thread_join(thread);
    g_main_loop_unref(loop);
    return status;
}
/* [start] */
