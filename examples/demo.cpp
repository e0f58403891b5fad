#include "demo/cache.h"
#include "demo/chapters.h"
#include "demo/stopwatch.h"
#include "demo/table.h"

#include <iostream>

/// A client of the library, from its first launch to its last exit. It uses the public header alone; the records come
/// from a generator in the place of a server.
namespace demo {

namespace {

void restart(const TemporaryDirectory &directory, unsigned int usersBefore)
{
    chapter("After a restart");
    const auto size = std::filesystem::file_size(directory.path() / "CacheDb");
    say("The cache has been exited. What it knew is in one SQLite file, CacheDb, of " + std::to_string(size / 1024) +
        " KiB, and nothing else is left in the directory. Tomorrow morning the program starts again, with the line to "
        "the server down:");
    const Stopwatch stopwatch;
    const RunningCache cache;
    const std::string passed = stopwatch.milliseconds();
    Users users;
    expect(getLaunchCacheResult(), "getLaunchCacheResult of a second launch");
    expect(getUsers(users.out(), users.count()), "getUsers");
    if (users.size() != usersBefore)
        throw std::runtime_error("users were lost");
    show({"launch result 0 (the stored records were kept), running after " + passed,
          std::to_string(users.size()) + " users at hand"});
}

unsigned int countUsers()
{
    Users users;
    expect(getUsers(users.out(), users.count()), "getUsers");
    return users.size();
}

/// The cache is left in a directory, if one is named.
void run(const std::filesystem::path &leftIn)
{
    const generator::Centre centre(1, {.sites = 200, .events = 12000});
    const TemporaryDirectory directory;

    chapter("TarnelLib");
    say("A centre guards shops, schools and warehouses. When one of them reports something, the operator's program "
        "must "
        "show at once what is known about the place, also when the server is slow or cannot be reached. So the program "
        "keeps all of it beside itself: it pushes the records into TarnelLib as they arrive from the server, and reads "
        "them back when it needs them. This is such a program, with a made-up centre.");

    unsigned int users = 0;
    {
        chapter("Starting");
        say("One thread calls launchCache and stays in it; the others wait until getState says 2 (running) and then "
            "look at how the launch went.");
        const RunningCache cache;
        const unsigned int launched = getLaunchCacheResult();
        expect(launched, "getLaunchCacheResult", TARNEL_DATABASE_CREATED);
        show({"directory      " + directory.path().string(), "state          " + std::to_string(getState()),
              "launch result  " + std::to_string(launched) + " (there was no file; a new one was made)"});
        say("Qt, on which the library rests, remarks on its standard error output that the main thread did not make "
            "its application object. That is as intended.");

        fillCache(centre);
        showCentre(centre);
        showSite();
        showLastEvents(centre);
        receiveLive(centre);
        filter(centre);
        update(centre);
        deleteSome(centre);
        beRefused();
        prune();
        users = countUsers();
    }
    restart(directory, users);
    say("That is all. The temporary directory goes now; a real client keeps it.");
    if (!leftIn.empty())
        std::filesystem::copy_file(directory.path() / "CacheDb", leftIn / "CacheDb");
}

} // namespace

} // namespace demo

int main(int count, char **arguments)
{
    try {
        demo::run(count > 1 ? std::filesystem::absolute(arguments[1]) : std::filesystem::path());
        return 0;
    } catch (const std::exception &failure) {
        std::cerr << "The demo failed: " << failure.what() << '\n';
        return 1;
    }
}
