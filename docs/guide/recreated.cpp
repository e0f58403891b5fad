/// After launch results 101 to 103: what a start does by itself, and how a program goes about it that wants to know.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <tarnel/tarnel.hpp>

using namespace tarnel;

namespace {

void askServerForEverything(const Cache &cache)
{
    cache.add<Locale>(R"({"D": {"items": [{"id": 1, "iso": "el"}]}})").value();
}

void spoilFile()
{
    std::ofstream("CacheDb") << "Not a database, but long enough to be looked at as one. " << std::string(4096, '?');
}

bool startsOver()
{
    Cache cache;
    //! [startOver]
    const Launch launch = cache.start().value();
    if (launch.first != launch.code)
        std::cerr << tarnelCodeName(launch.first) << ": the cache was made anew\n";
    if (launch.isNew())
        askServerForEverything(cache);
    //! [startOver]
    return launch.first == TARNEL_DATABASE_RECREATED_VERSION_MISMATCH && cache.get<Locale>(1).ok();
}

bool reports()
{
    Cache cache;
    //! [report]
    auto launch = cache.start(std::chrono::seconds(30), Recreated::Report);
    if (launch.code() >= TARNEL_DATABASE_RECREATED_TABLES_INVALID &&
        launch.code() <= TARNEL_DATABASE_RECREATED_VERSION_MISMATCH) {
        std::cerr << launch.reason() << '\n'; // Nothing runs now, and the file has no tables.
        std::remove("CacheDb");
        launch = cache.start();
    }
    //! [report]
    return launch.ok() && launch->first == TARNEL_DATABASE_CREATED;
}

} // namespace

int main()
{
    try {
        spoilFile();
        const bool hasStartedOver = startsOver();
        spoilFile();
        return hasStartedOver && reports() ? 0 : 1;
    } catch (const Error &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
