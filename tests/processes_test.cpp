#include "client.h"

#include <dlfcn.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

/// What else goes on in the client's process: its exit, its forks, and a loop of GLib's.
namespace client {

namespace {

using namespace std::chrono_literals;

/// Forks again and again; each child does something, which gives its status, and exits.
void expectExits(const std::function<int()> &work)
{
    for (int round = 0; round < 20 && !testing::Test::HasFailure(); ++round)
        EXPECT_EXIT((::alarm(20), std::exit(work())), testing::ExitedWithCode(0), "");
}

/// Forks at any moment of calls of another thread, which have this code; `isWell` is asked in the children.
void forkDuringCalls(unsigned int code, const std::function<bool()> &isWell)
{
    const Busy caller(1, [code] { EXPECT_EQ(clearAll(), code); });
    expectExits([&] {
        const int status = isWell() ? 0 : 1;
#ifdef TARNEL_SANITIZED // Whose own locks may have been held by a thread that is not here.
        ::_exit(status);
#endif
        return status;
    });
}

} // namespace

using Process = DirectoryTest;

TEST_F(Process, mayExitInTheMiddleOfEverything)
{
    expectExits([] {
        // Volatile, or the pointers go, and what they point to counts as leaked.
        [[maybe_unused]] static RunningCache *volatile cache = new RunningCache;
        [[maybe_unused]] static Busy *volatile callers = new Busy(2, [] {
            api::Locale *locale = nullptr;
            clearAll();
            getLocale(&locale, 1);
        });
        std::this_thread::sleep_for(5ms);
        return 0;
    });
}

TEST_F(Process, mayForkWhileTheCacheRuns)
{
    {
        const RunningCache cache;
        forkDuringCalls(TARNEL_SUCCESS, [] {
            exitCache();
            launchCache();
            return getState() == TARNEL_STATE_NONE && getLaunchCacheResult() == TARNEL_NOT_AVAILABLE &&
                   clearAll() == TARNEL_NOT_AVAILABLE;
        });
        EXPECT_EQ(clearAll(), TARNEL_SUCCESS) << "the children have left the parent's cache alone";
    }
    const RunningCache again;
    EXPECT_EQ(getLaunchCacheResult(), TARNEL_SUCCESS);
}

TEST_F(Process, mayForkBeforeTheLaunch)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "ThreadSanitizer does not let a child start threads";
#endif
    // The calls find no cache, but may hold a lock at the moment of the fork.
    forkDuringCalls(TARNEL_NOT_AVAILABLE, [] {
        const RunningCache cache;
        return clearAll() == TARNEL_SUCCESS;
    });
}

/// GLib comes with Qt. A GLib program's callbacks come on its own thread, whether its loop starts before the cache or
/// after it.
TEST_F(Process, mayRunALoopOfGlib)
{
    const auto makeLoop = reinterpret_cast<void *(*)(void *, int)>(::dlsym(RTLD_DEFAULT, "g_main_loop_new"));
    const auto runLoop = reinterpret_cast<void (*)(void *)>(::dlsym(RTLD_DEFAULT, "g_main_loop_run"));
    const auto dropLoop = reinterpret_cast<void (*)(void *)>(::dlsym(RTLD_DEFAULT, "g_main_loop_unref"));
    using Callback = int (*)(void *);
    const auto addTimeout =
        reinterpret_cast<unsigned int (*)(unsigned int, Callback, void *)>(::dlsym(RTLD_DEFAULT, "g_timeout_add"));
    static const auto quitLoop = reinterpret_cast<void (*)(void *)>(::dlsym(RTLD_DEFAULT, "g_main_loop_quit"));
    static const std::thread::id own = std::this_thread::get_id();
    static int ticks = 0;
    const Callback tick = [](void *loop) {
        EXPECT_EQ(std::this_thread::get_id(), own);
        if (++ticks % 60 == 0)
            quitLoop(loop);
        return ticks % 60;
    };
    for (const std::chrono::milliseconds delay : {0ms, 100ms}) {
        void *const loop = makeLoop(nullptr, 0);
        std::jthread launch([delay] {
            std::this_thread::sleep_for(delay);
            launchCache();
        });
        std::this_thread::sleep_for(50ms - delay / 2);
        addTimeout(5, tick, loop);
        runLoop(loop);
        dropLoop(loop);
        EXPECT_EQ(getState(), TARNEL_STATE_RUNNING);
        exitCache();
    }
}

} // namespace client
