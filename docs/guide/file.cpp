/// What survives a kill, and how the file is copied.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <sys/wait.h>
#include <tarnel/tarnel.hpp>
#include <unistd.h>

using namespace tarnel;

namespace {

/// Two processes of one program: the first is killed at once after a call that has returned 0.
bool survivesAKill()
{
    const pid_t child = ::fork();
    if (child == 0) {
        //! [kill]
        Cache cache;
        if (cache.start() && cache.add<User>({{user::id(7), user::name("Ada")}}))
            std::raise(SIGKILL); // No exit, no flush, no destructor.
        //! [kill]
        ::_exit(1);
    }
    int status = 0;
    if (::waitpid(child, &status, 0) != child || !WIFSIGNALED(status))
        return false;
    //! [survived]
    Cache cache;
    const auto launch = cache.start();
    return launch.code() == TARNEL_SUCCESS && utf8(cache.get<User>(7)->name) == "Ada";
    //! [survived]
}

//! [copy]
/// Copies the file of a cache that runs, and rests: `CacheDb` is whole two seconds after the last write.
bool copyFile(const std::filesystem::path &target)
{
    std::error_code error;
    const auto isFolded = [&error] {
        const auto size = std::filesystem::file_size("CacheDb-wal", error);
        return error || size == 0; // Without a log everything is in the file.
    };
    for (int tenth = 0; tenth < 50 && !isFolded(); ++tenth)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return isFolded() && std::filesystem::copy_file("CacheDb", target, error);
}
//! [copy]

bool copyIsWhole()
{
    const std::filesystem::path directory = "copy";
    std::filesystem::create_directory(directory);
    Cache cache;
    if (!cache.start() || !cache.add<User>({{user::id(8), user::name("Bob")}}) || !copyFile(directory / "CacheDb"))
        return false;
    cache.stop();
    std::filesystem::current_path(directory);
    return cache.start().code() == TARNEL_SUCCESS && cache.all<User>().value().size() == 2;
}

} // namespace

int main()
{
    const bool isDurable = survivesAKill();
    const bool isCopied = copyIsWhole();
    std::cout << "durable: " << isDurable << ", copied: " << isCopied << '\n';
    return isDurable && isCopied ? 0 : 1;
}
