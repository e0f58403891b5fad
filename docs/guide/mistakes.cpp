/// Makes the mistakes that clients make, and prints what they are told: mistakes.txt, which the guide shows.
#include <QCoreApplication>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <tarnel/tarnel.hpp>

using namespace tarnel;

namespace {

/// A part of what is printed, between two lines with its name.
class Case
{
public:
    explicit Case(const char *name) : m_name(name) { std::printf("[%s]\n", m_name); }
    ~Case() { std::printf("[%s]\n", m_name); }

private:
    const char *m_name;
};

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
    {
        const Case one("null");
        //! [null]
        print(cache.add<User>(R"({"D": {"items": [{"id": 7}, {"id": 8, "name": null}]}})"));
        //! [null]
    }
    {
        const Case one("json");
        //! [json]
        print(cache.add<User>(R"({"D": {"items": [{"id": 7 "name": "Ada"}]}})"));
        //! [json]
    }
    {
        const Case one("flag");
        //! [flag]
        print(cache.add<User>(R"({"D": {"items": [{"id": 7, "active": true}]}})"));
        //! [flag]
    }
    {
        const Case one("milliseconds");
        //! [milliseconds]
        print(cache.addOne<tarnel::Event>(R"({"D": {"id": 1, "time": 1700000000000, "device": 1}})"));
        //! [milliseconds]
    }
    {
        const Case one("identifier");
        //! [identifier]
        print(cache.add<User>(R"({"D": {"items": [{"id": 4294967303, "name": "Ada"}]}})"));
        //! [identifier]
    }
    {
        const Case one("device");
        //! [device]
        print(cache.addOne<tarnel::Event>(R"({"D": {"id": 1, "time": 1700000000, "device": 3000000000}})"));
        //! [device]
    }
    {
        const Case one("key");
        //! [key]
        print(cache.add<User>(R"({"D": {"items": [{"id": 7, "nmae": "Ada"}]}})"));
        //! [key]
    }
    {
        const Case one("delete");
        //! [delete]
        const Text request(R"({"D": {"op_id": "7"}})");
        print(deleteUser(request.units(), request.length()));
        //! [delete]
    }
    {
        const Case one("filter");
        //! [filter]
        print(cache.where<User>("nmae", "Ada"));
        //! [filter]
    }
    {
        const Case one("checked");
        //! [checked]
        try {
            const unsigned long long now = 1700000000000;
            print(cache.addOne<tarnel::Event>({event::id(1), event::time(now), event::deviceId(1)}));
        } catch (const Error &error) {
            std::printf("%s\n", error.what());
        }
        //! [checked]
    }
}

void makeMistakesInCalls()
{
    {
        const Case one("output");
        //! [output]
        User *user = nullptr;
        print(getUser(&user, 7));
        print(getUser(&user, 8)); // The first is still in it.
        freeUser(user);
        //! [output]
    }
}

void makeMistakesWithTheFile(Cache &cache)
{
    {
        const Case one("moved");
        //! [moved]
        std::filesystem::rename("CacheDb", "CacheDb.old"); // While the cache runs.
        print(cache.add<User>(R"({"D": {"items": [{"id": 7}]}})"));
        //! [moved]
    }
    cache.stop();
    {
        const Case one("early");
        //! [early]
        print(cache.all<User>()); // Before a start, or after a stop.
        //! [early]
    }
    {
        const Case one("unavailable");
        //! [unavailable]
        std::filesystem::create_directory("CacheDb");
        print(cache.start());
        //! [unavailable]
    }
    for (const char *name : {"CacheDb", "CacheDb-wal", "CacheDb-shm"})
        std::filesystem::remove_all(name);
    std::ofstream("CacheDb") << "no database";
    {
        const Case one("noTables");
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
    }
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
    {
        const Case one("application");
        //! [application]
        auto application = std::make_unique<QCoreApplication>(argc, argv);
        if (cache.start())
            application.reset(); // The cache should have been stopped before.
        //! [application]
    }
}
