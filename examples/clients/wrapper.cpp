#include <iostream>
#include <tarnel/tarnel.hpp>

using namespace tarnel;

/// As a server sends it.
std::string siteOf(const std::string &id)
{
    return R"({"id": )" + id + R"(, "devices": [{"id": )" + id + R"(, "sections": [{"id": 1, "name": "Vault"}]}]})";
}

int main()
{
    std::vector<std::string> sites;
    for (int i = 1; i <= 5000; ++i)
        sites.push_back(siteOf(std::to_string(i)));
    std::vector<Fields<Event>> events;
    for (int i = 1; i <= 50000; ++i)
        events.push_back({event::id(i), event::time(i), event::deviceId(i % 5000 + 1), event::sectionId(1)});

    const auto tell = [](std::size_t stored) {
        std::cout << stored << " events\n";
        return true; // False would cancel the rest.
    };

    try {
        Cache cache; // Its end stops it.
        if (cache.start().value().isNew()) {
            cache.load<Site>(sites).value();
            cache.load<Event>(events, {10000, tell}).value();
        }
        for (const Event &event : cache.events(49901, 50000).value())
            std::cout << "event " << event.id << ": " << utf8(event.sectionName) << '\n';

        const auto site = cache.update<Site>({site::id(7), site::name("Südtor"), site::isDelegated(true)});
        std::cout << utf8(site->name) << (value(site->isDelegated) == true ? ", delegated\n" : "\n");

        cache.stop();
        cache.start().value();
        std::cout << utf8(cache.get<Site>(7)->name) << '\n';
    } catch (const Error &error) { // With the code and the reason.
        std::cerr << error.what() << '\n';
        return 1;
    }
}
