#include <tarnel/tarnel.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <chrono>
#include <cstdlib>
#include <thread>

// Functions of this program's own that happen to have the library's names. They are exported, and found first.
extern "C" {
unsigned int getState()
{
    return 77;
}
unsigned int getUser(tarnelLib::api::User **, unsigned int)
{
    return 78;
}
void exitCache()
{
    std::abort();
}
}

namespace {

using namespace std::chrono_literals;

/// The library, loaded while the program runs.
struct Library {
    void *handle = ::dlopen(TARNEL_LIBRARY, RTLD_NOW | RTLD_LOCAL);

    template <class Result = unsigned int>
    Result call(const char *name) const
    {
        return reinterpret_cast<Result (*)()>(::dlsym(handle, name))();
    }
};

} // namespace

TEST(Loading, keepsTheLibraryAndItsNamesApartFromTheProgram)
{
    for (int round = 0; round < 2; ++round) {
        const Library library;
        std::thread launch([&library] { library.call<void>("launchCache"); });
        while (library.call("getState") != TARNEL_STATE_RUNNING)
            std::this_thread::sleep_for(1ms);
        EXPECT_EQ(::dlclose(library.handle), 0) << "while the cache runs";
        std::this_thread::sleep_for(50ms);
        const Library again;
        EXPECT_EQ(again.call("getState"), TARNEL_STATE_RUNNING);
        EXPECT_EQ(again.call("clearAll"), TARNEL_SUCCESS);
        again.call<void>("exitCache");
        launch.join();
        EXPECT_EQ(::dlclose(again.handle), 0);
    }
    EXPECT_EQ(::getState(), 77U);
    EXPECT_EQ(::getUser(nullptr, 0), 78U);
}
