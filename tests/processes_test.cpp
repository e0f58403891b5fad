#include <tarnel/tarnel.h>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>

// Functions of this program's own that happen to have the library's names. They are exported, and found first.
extern "C" {
unsigned int getState()
{
    return 77;
}
unsigned int getLaunchCacheResult()
{
    return 78;
}
unsigned int freeLocale(tarnelLib::api::Locale *)
{
    std::abort();
}
void exitCache()
{
    std::abort();
}
}

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// The library, loaded while the program runs.
struct Library {
    void *handle = ::dlopen(TARNEL_LIBRARY, RTLD_NOW | RTLD_LOCAL);

    template <class Function>
    Function *get(const char *name) const
    {
        return reinterpret_cast<Function *>(::dlsym(handle, name));
    }
#define LIBRARY_FUNCTION(name) decltype(::name) *name = get<decltype(::name)>(#name)
    LIBRARY_FUNCTION(launchCache);
    LIBRARY_FUNCTION(exitCache);
    LIBRARY_FUNCTION(getState);
    LIBRARY_FUNCTION(getLaunchCacheResult);
    LIBRARY_FUNCTION(addLocales);
    LIBRARY_FUNCTION(getLocale);
    LIBRARY_FUNCTION(freeLocale);
#undef LIBRARY_FUNCTION

    [[nodiscard]] std::thread launch() const
    {
        std::thread thread(launchCache);
        while (getState() != TARNEL_STATE_RUNNING)
            std::this_thread::sleep_for(1ms);
        return thread;
    }

    [[nodiscard]] unsigned int add() const
    {
        constexpr std::u16string_view text = uR"({"D":{"items":[{"id":1,"iso":"en"}]}})";
        return addLocales(reinterpret_cast<const unsigned short *>(text.data()),
                          static_cast<unsigned int>(text.size()));
    }

    [[nodiscard]] unsigned int read() const
    {
        tarnelLib::api::Locale *locale = nullptr;
        const unsigned int code = getLocale(&locale, 1);
        return code == TARNEL_SUCCESS ? freeLocale(locale) : code;
    }
};

/// Ends a role that does not do what it should, with a message; not through `exit`, which is itself under test.
void require(bool isFulfilled, const char *what)
{
    if (isFulfilled)
        return;
    std::cerr << "not fulfilled: " << what << std::endl;
    ::_exit(1);
}
#define REQUIRE(condition) require(condition, #condition)

/// What `fork` is for: runs `work` in a child, and fails if that does not end by itself and well.
void inChild(const std::function<void()> &work)
{
    const ::pid_t child = ::fork();
    if (child == 0) {
        ::alarm(20);
        work();
        std::exit(0);
    }
    int status = -1;
    REQUIRE(::waitpid(child, &status, 0) == child);
    REQUIRE(status == 0);
}

/// A cache in the middle of its work, which nobody ends.
void leaveRunning()
{
    static const Library library;
    library.launch().detach();
    REQUIRE(library.add() == TARNEL_SUCCESS);
    for (int i = 0; i < 2; ++i)
        std::thread([] {
            while (library.read() != TARNEL_INVALID_ARGUMENT) {
            }
        }).detach();
}

void endByExit()
{
    leaveRunning();
    std::exit(0);
}

void collide()
{
    const Library library;
    std::thread launch = library.launch();
    REQUIRE(library.getLaunchCacheResult() == TARNEL_DATABASE_CREATED);
    REQUIRE(library.add() == TARNEL_SUCCESS && library.read() == TARNEL_SUCCESS);
    library.exitCache();
    launch.join();
    REQUIRE(::getState() == 77 && ::getLaunchCacheResult() == 78);
}

void unload()
{
    for (const unsigned int result : {TARNEL_DATABASE_CREATED, TARNEL_SUCCESS, TARNEL_SUCCESS}) {
        const Library library;
        std::thread launch = library.launch();
        REQUIRE(library.getLaunchCacheResult() == result);
        REQUIRE(::dlclose(library.handle) == 0);
        std::this_thread::sleep_for(50ms);
        const Library again;
        REQUIRE(again.getState() == TARNEL_STATE_RUNNING && again.add() == TARNEL_SUCCESS);
        again.exitCache();
        launch.join();
        REQUIRE(::dlclose(again.handle) == 0);
    }
}

void forkWhileRunning()
{
    const Library library;
    std::thread launch = library.launch();
    std::atomic<bool> isBusy = true;
    std::thread caller([&] {
        while (isBusy)
            REQUIRE(library.add() == TARNEL_SUCCESS);
    });
    for (int round = 0; round < 20; ++round) {
        inChild([&] {
            REQUIRE(library.getState() == TARNEL_STATE_NONE);
            REQUIRE(library.getLaunchCacheResult() == TARNEL_NOT_AVAILABLE);
            REQUIRE(library.add() == TARNEL_NOT_AVAILABLE);
            library.exitCache();
            library.launchCache();
            REQUIRE(library.read() == TARNEL_NOT_AVAILABLE);
        });
        REQUIRE(library.read() != TARNEL_READ_FAILED);
    }
    isBusy = false;
    caller.join();
    library.exitCache();
    launch.join();
    launch = library.launch();
    REQUIRE(library.getLaunchCacheResult() == TARNEL_SUCCESS && library.read() == TARNEL_SUCCESS);
    library.exitCache();
    launch.join();
}

/// Here the calls find no cache, but may hold a lock at the moment of the fork.
void forkBeforeLaunch()
{
    const Library library;
    std::atomic<bool> isBusy = true;
    std::thread caller([&] {
        while (isBusy)
            REQUIRE(library.read() == TARNEL_NOT_AVAILABLE);
    });
    for (int round = 0; round < 20; ++round)
        inChild([&] {
            std::thread launch = library.launch();
            REQUIRE(library.add() == TARNEL_SUCCESS && library.read() == TARNEL_SUCCESS);
            library.exitCache();
            launch.join();
        });
    isBusy = false;
    caller.join();
}

/// A GLib program: its callbacks come on its own thread, whether its loop starts before the cache or after it.
void runGlibLoop()
{
    void *const glib = ::dlopen("libglib-2.0.so.0", RTLD_NOW);
    const auto makeLoop = reinterpret_cast<void *(*)(void *, int)>(::dlsym(glib, "g_main_loop_new"));
    const auto runLoop = reinterpret_cast<void (*)(void *)>(::dlsym(glib, "g_main_loop_run"));
    static const auto quitLoop = reinterpret_cast<void (*)(void *)>(::dlsym(glib, "g_main_loop_quit"));
    const auto dropLoop = reinterpret_cast<void (*)(void *)>(::dlsym(glib, "g_main_loop_unref"));
    const auto addTimeout =
        reinterpret_cast<unsigned int (*)(unsigned int, int (*)(void *), void *)>(::dlsym(glib, "g_timeout_add"));
    static const std::thread::id own = std::this_thread::get_id();
    static int ticks = 0;
    const Library library;
    for (const std::chrono::milliseconds delay : {0ms, 100ms}) {
        ticks = 0;
        void *const loop = makeLoop(nullptr, 0);
        std::thread launch([&library, delay] {
            std::this_thread::sleep_for(delay);
            library.launchCache();
        });
        std::this_thread::sleep_for(50ms - delay / 2);
        addTimeout(
            5,
            [](void *ticking) {
                REQUIRE(std::this_thread::get_id() == own);
                if (++ticks < 60)
                    return 1;
                quitLoop(ticking);
                return 0;
            },
            loop);
        runLoop(loop);
        REQUIRE(library.getState() == TARNEL_STATE_RUNNING && library.add() == TARNEL_SUCCESS);
        library.exitCache();
        launch.join();
        dropLoop(loop);
    }
}

struct Role {
    const char *name;
    void (*play)();
    int rounds;
};

void PrintTo(const Role &role, std::ostream *stream)
{
    *stream << role.name;
}

constexpr Role roles[] = {
    {"returnFromMain", leaveRunning, 20},
    {"exit", endByExit, 20},
    {"collidingNames", collide, 1},
    {"dlclose", unload, 1},
    {"forkWhileRunning", forkWhileRunning, 1},
    {"forkBeforeLaunch", forkBeforeLaunch, 1},
    {"glibLoop", runGlibLoop, 1},
};

std::string program;

} // namespace

class Process : public testing::TestWithParam<Role>
{
};

TEST_P(Process, endsWell)
{
#ifdef __SANITIZE_THREAD__
    if (GetParam().play == forkBeforeLaunch)
        GTEST_SKIP() << "ThreadSanitizer does not let a child start threads";
#endif
    for (int round = 0; round < GetParam().rounds; ++round) {
        std::string directory = (fs::temp_directory_path() / "tarnel-XXXXXX").string();
        ASSERT_NE(::mkdtemp(directory.data()), nullptr);
        const std::string command = "cd " + directory + " && timeout 60 " + program + " " + GetParam().name;
        EXPECT_EQ(std::system(command.c_str()), 0) << round;
        fs::remove_all(directory);
    }
}

INSTANTIATE_TEST_SUITE_P(Roles, Process, testing::ValuesIn(roles),
                         [](const auto &role) { return std::string(role.param.name); });

int main(int argc, char **argv)
{
    for (const Role &role : roles) {
        if (argc == 2 && std::string(argv[1]) == role.name) {
            role.play();
            return 0;
        }
    }
    program = fs::absolute(argv[0]).string();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
