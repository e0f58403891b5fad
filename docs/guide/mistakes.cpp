/// Makes the mistakes that clients make, and prints what they are told: mistakes.txt, which the guide shows.
#include <QCoreApplication>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <tarnel/tarnel.hpp>

using namespace tarnel;

namespace {

/// Begins a part of what is printed, which stands between two lines with its name.
void begin(const char *name)
{
    static const char *last = nullptr;
    for (const char *line : {std::exchange(last, name), name}) {
        if (line != nullptr)
            std::printf("[%s]\n", line);
    }
}

template <class Answer>
void print(const Answer &answer)
{
    std::printf("%u%s%s\n", answer.code(), answer.ok() ? "" : " ", answer.reason().c_str());
}

/// For calls of the plain functions.
void print(unsigned int code)
{
    print(Result<void>(code));
}

void makeMistakesInRequests(const Cache &cache)
{
    begin("null");
    //! [null]
    print(cache.add<User>(R"({"D": {"items": [{"id": 7}, {"id": 8, "name": null}]}})"));
    //! [null]

    begin("json");
    //! [json]
    print(cache.add<User>(R"({"D": {"items": [{"id": 7 "name": "Ada"}]}})"));
    //! [json]

    begin("flag");
    //! [flag]
    print(cache.add<User>(R"({"D": {"items": [{"id": 7, "active": true}]}})"));
    //! [flag]

    begin("milliseconds");
    //! [milliseconds]
    print(cache.addOne<Event>(R"({"D": {"id": 1, "time": 1700000000000, "device": 1}})"));
    //! [milliseconds]

    begin("identifier");
    //! [identifier]
    print(cache.add<User>(R"({"D": {"items": [{"id": 4294967303, "name": "Ada"}]}})"));
    //! [identifier]

    begin("device");
    //! [device]
    print(cache.addOne<Event>(R"({"D": {"id": 1, "time": 1700000000, "device": 3000000000}})"));
    //! [device]

    begin("key");
    //! [key]
    print(cache.add<User>(R"({"D": {"items": [{"id": 7, "nmae": "Ada"}]}})"));
    //! [key]

    begin("delete");
    //! [delete]
    const Text request(R"({"D": {"op_id": "7"}})");
    print(deleteUser(request.units(), request.length()));
    //! [delete]

    begin("filter");
    //! [filter]
    print(cache.where<User>("nmae", "Ada"));
    //! [filter]

    begin("checked");
    //! [checked]
    try {
        const unsigned long long now = 1700000000000;
        print(cache.addOne<Event>({event::id(1), event::time(now), event::deviceId(1)}));
    } catch (const Error &error) {
        std::printf("%s\n", error.what());
    }
    //! [checked]
}

void makeMistakesInCalls()
{
    begin("output");
    //! [output]
    User *user = nullptr;
    print(getUser(&user, 7));
    print(getUser(&user, 8)); // The first is still in it.
    freeUser(user);
    //! [output]
}

void makeMistakesWithTheFile(Cache &cache)
{
    begin("moved");
    //! [moved]
    std::filesystem::rename("CacheDb", "CacheDb.old"); // While the cache runs.
    print(cache.add<User>(R"({"D": {"items": [{"id": 7}]}})"));
    //! [moved]
    cache.stop();

    begin("early");
    //! [early]
    print(cache.all<User>()); // Before a start, or after a stop.
    //! [early]

    begin("unavailable");
    //! [unavailable]
    std::filesystem::create_directory("CacheDb");
    print(cache.start());
    //! [unavailable]
    for (const char *name : {"CacheDb", "CacheDb-wal", "CacheDb-shm"})
        std::filesystem::remove_all(name);
    std::ofstream("CacheDb") << "no database";

    begin("noTables");
    //! [noTables]
    std::thread thread(launchCache);
    while (getState() != TARNEL_STATE_RUNNING)
        std::this_thread::yield();
    std::printf("%u\n", getLaunchCacheResult()); // 103: the file was none of ours, and has no tables now.
    print(cache.all<User>());
    print(cache.add<User>(R"({"D": {"items": [{"id": 7}]}})"));
    exitCache();
    thread.join();
    //! [noTables]
    std::filesystem::remove("CacheDb");
}

} // namespace

int main(int argc, char **argv)
{
    std::setvbuf(stdout, nullptr, _IONBF, 0); // In one order with the log.
    Cache cache;
    {
        const QCoreApplication application(argc, argv);
        if (!cache.start() || !cache.addOne<Device>({device::id(1)}))
            return 1;
        makeMistakesInRequests(cache);
        makeMistakesInCalls();
        makeMistakesWithTheFile(cache);
    }

    begin("application");
    //! [application]
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    if (!cache.start())
        return 1;
    application.reset(); // The cache should have been stopped before.
    //! [application]
    begin(nullptr);
}
