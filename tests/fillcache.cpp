/// Fills a cache with a made-up centre, for tests of what looks at caches from outside.
/// fillcache DIRECTORY SITES EVENTS [exit | kill | wait | write SECONDS]: what the client does then. `wait` and `write`
/// say "ready" first; `write` says at its end how many events it has added, and how many adds were refused.

#include <generator/centre.h>
#include <tarnel/tarnel.hpp>

#include <filesystem>
#include <iostream>
#include <unistd.h>

namespace {

template <class Record, class Kind>
void add(const tarnel::Cache &cache, const generator::Centre &centre)
{
    centre.forEachAddRequest<Record>(5000, [&](const std::u16string &request) {
        if (const auto added = cache.add<Kind>(request); !added.ok())
            throw tarnel::Error(added.code(), added.reason());
    });
}

void write(const tarnel::Cache &cache, std::chrono::seconds duration)
{
    unsigned int events = 0;
    unsigned int refused = 0;
    for (const auto end = std::chrono::steady_clock::now() + duration; std::chrono::steady_clock::now() < end;) {
        std::vector<tarnel::Fields<tarnel::Event>> slice;
        for (int i = 0; i < 50; ++i, ++events)
            slice.push_back({tarnel::event::id(10000000 + events), tarnel::event::deviceId(100001)});
        refused += cache.add<tarnel::Event>(slice).ok() ? 0 : 1;
    }
    std::cout << events << ' ' << refused << '\n';
}

void run(const std::vector<std::string> &given)
{
    const auto number = [&](std::size_t i) { return static_cast<unsigned int>(std::stoul(given.at(i))); };
    const generator::Centre centre(1, {.sites = number(1), .events = number(2)});
    std::filesystem::current_path(given.at(0));
    tarnel::Cache cache;
    cache.start().value();
    add<generator::Locale, tarnel::Locale>(cache, centre);
    add<generator::Domain, tarnel::Domain>(cache, centre);
    add<generator::User, tarnel::User>(cache, centre);
    add<generator::Organization, tarnel::Organization>(cache, centre);
    add<generator::Contractor, tarnel::Contractor>(cache, centre);
    add<generator::Contract, tarnel::Contract>(cache, centre);
    add<generator::Site, tarnel::Site>(cache, centre);
    add<generator::Event, tarnel::Event>(cache, centre);
    cache.setServerIp("10.1.2.3:4000").value();
    const std::string then = given.size() > 3 ? given[3] : "exit";
    if (then == "kill")
        ::_exit(0);
    if (then != "exit")
        std::cout << "ready" << std::endl;
    if (then == "wait")
        std::cin.get();
    else if (then == "write")
        write(cache, std::chrono::seconds(number(4)));
}

} // namespace

int main(int count, char **arguments)
{
    try {
        run({arguments + 1, arguments + count});
        return 0;
    } catch (const std::exception &failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
