/// A feed of many events, and the last hundred of them: history [how many].
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <tarnel/tarnel.hpp>

using namespace tarnel;

namespace {

/// A server that has events of a second each, and sends them in pages.
class Server
{
public:
    explicit Server(unsigned int events) : m_events(events) {}

    std::vector<std::string> nextPage()
    {
        std::vector<std::string> page;
        while (page.size() < 25000 && m_sent < m_events) {
            ++m_sent;
            std::ostringstream event;
            event << R"({"id": )" << m_sent << R"(, "time": )" << m_sent << R"(, "device": 1, "section": 2})";
            page.push_back(event.str());
        }
        return page;
    }

private:
    unsigned int m_events;
    unsigned int m_sent = 0;
};

//! [feed]
/// Stores what the server has, a page at a time; less if the user loses patience, or a call fails.
std::size_t storeFeed(const Cache &cache, Server &server, const std::function<bool(std::size_t)> &isToGoOn)
{
    std::size_t stored = 0;
    const auto progress = [&](std::size_t ofPage) { return isToGoOn(stored + ofPage); };
    for (auto page = server.nextPage(); !page.empty(); page = server.nextPage()) {
        const Loaded loaded = cache.load<Event>(page, {5000, progress});
        stored += loaded.stored; // Whole slices of 5,000 events, which are on the disk.
        if (!loaded)
            std::cerr << loaded.error().what() << '\n';
        if (!loaded || loaded.isCancelled)
            break;
    }
    return stored;
}
//! [feed]

//! [last]
/// Prints the last events, the newest first. It looks back an hour, and twice as far until there are enough.
std::size_t printLast(const Cache &cache, std::size_t count, unsigned int now)
{
    unsigned int span = std::min(3600U, now);
    Records<Event> events = cache.events(now - span, now).value();
    while (events.size() < count && span < now) {
        span = span < now / 2 ? span * 2 : now;
        events = cache.events(now - span, now).value();
    }

    // They come in no particular order. Each has a time, by which it was found.
    std::vector<const Event *> newest;
    for (const Event &event : events)
        newest.push_back(&event);
    std::sort(newest.begin(), newest.end(), [](const Event *a, const Event *b) { return *a->time > *b->time; });
    newest.resize(std::min(count, newest.size()));
    for (const Event *event : newest)
        std::cout << *event->time << ' ' << utf8(event->sectionName) << '\n';
    return newest.size();
}
//! [last]

} // namespace

int main(int argc, char **argv)
{
    const auto events = static_cast<unsigned int>(argc > 1 ? std::atoi(argv[1]) : 1000000);
    try {
        Cache cache;
        cache.start().value();
        cache.addOne<Device>({device::id(1), device::sections({{section::id(2), section::name("Vault")}})}).value();
        Server cancelled(events);
        if (storeFeed(cache, cancelled, [](std::size_t) { return false; }) != 5000)
            return 1;
        Server server(events);
        const auto tell = [](std::size_t stored) { return static_cast<bool>(std::cerr << stored << " events\n"); };
        if (storeFeed(cache, server, tell) != events)
            return 1;
        return printLast(cache, 100, events + 5000) == 100 && printLast(cache, 6000, events) == 6000 ? 0 : 1;
    } catch (const Error &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
