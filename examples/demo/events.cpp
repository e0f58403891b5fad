#include "demo/cache.h"
#include "demo/chapters.h"
#include "demo/stopwatch.h"
#include "demo/table.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>

namespace demo {

namespace {

constexpr std::uint32_t liveEvents = 200;
constexpr std::ptrdiff_t alarmsShown = 15;
constexpr std::uint32_t eventsShown = 8;
constexpr std::uint32_t endOfTime = 0xffffffff;

std::string timeText(const unsigned int *time)
{
    if (time == nullptr)
        return "–";
    const std::time_t seconds = *time;
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%d %b %H:%M", &parts);
    return text.data();
}

/// The name of the site that an event comes from. Which device stands where is the client's to remember.
std::string siteName(const api::Event &event)
{
    if (event.deviceId == nullptr || *event.deviceId < static_cast<int>(generator::Device::firstId))
        return "–";
    const auto device = static_cast<std::uint32_t>(*event.deviceId) - generator::Device::firstId;
    unsigned short *name = nullptr;
    unsigned short *address = nullptr;
    expect(getSiteNameAndAddress(&name, &address, generator::Site::firstId + generator::Centre::siteOfDevice(device)),
           "getSiteNameAndAddress");
    std::string text = utf8(name);
    std::free(name);
    std::free(address);
    return text;
}

Table eventTable()
{
    return Table({"UTC", "site", "section", "zone", "what", "operator's domain", "affect"});
}

void addRow(Table &table, const api::Event &event)
{
    table.add({timeText(event.time), siteName(event), utf8(event.sectionName), utf8(event.zoneName), utf8(event.data),
               utf8(event.domainName), yesOrNo(event.affect)});
}

/// How many of the stored events say what about the affect flag: none, no, yes.
std::array<std::size_t, 3> countByFlag()
{
    Events events;
    expect(getEvents(events.out(), events.count(), 0, endOfTime), "getEvents");
    std::array<std::size_t, 3> counts{};
    for (const api::Event &event : events)
        ++counts[event.affect == nullptr ? 0 : *event.affect ? 2 : 1];
    return counts;
}

} // namespace

void receiveLive(const generator::Centre &centre)
{
    chapter("Live");
    say("From now on the server sends single events, as they happen. addEvent stores each and hands it back at once "
        "with what an operator wants to read: the account of the device, the names of section and zone, and the domain "
        "of the operator who has it. An event of a device that nobody has told the cache about is kept, too; it reads "
        "without the names.");
    const Stopwatch stopwatch;
    Table table = eventTable();
    std::size_t unknown = 0;
    for (std::uint32_t i = 0; i < liveEvents; ++i) {
        const std::u16string request =
            recordRequest(centre.make<generator::Event>(centre.count<generator::Event>() + i));
        Event event;
        expect(addEvent(event.out(), units(request), length(request)), "addEvent");
        const bool isUnknown = event->deviceAccount == nullptr;
        if (i < eventsShown || (isUnknown && unknown == 0))
            addRow(table, *event);
        unknown += isUnknown ? 1 : 0;
    }
    const std::string passed = stopwatch.milliseconds();
    table.print();
    say("These are some of " + std::to_string(liveEvents) +
        " that came in one by one, and were each on the disk before "
        "the call returned: all of them in " +
        passed + ". " + std::to_string(unknown) + " came from devices that are not in the cache.");
}

void showLastEvents(const generator::Centre &centre)
{
    chapter("The last alarms");
    say("getEvents reads a range of time, for devices that are in the cache. From the last three days of the month, "
        "these are the latest events that name a zone, each with what section, zone and operator lend it:");
    constexpr std::uint32_t end = generator::Centre::historyStart + generator::Centre::historySeconds;
    Events events;
    const Stopwatch stopwatch;
    expect(getEvents(events.out(), events.count(), end - 3 * 86400, end - 1), "getEvents");
    const std::string passed = stopwatch.milliseconds();
    std::vector<const api::Event *> alarms;
    for (const api::Event &event : events) {
        if (event.zoneName != nullptr)
            alarms.push_back(&event);
    }
    std::ranges::sort(alarms, {}, [](const api::Event *event) { return std::pair(*event->time, event->id); });
    Table table = eventTable();
    for (auto alarm = alarms.end() - std::min(alarmsShown, std::ssize(alarms)); alarm != alarms.end(); ++alarm)
        addRow(table, **alarm);
    table.print();
    say("The three days have " + std::to_string(events.size()) + " of the " +
        std::to_string(centre.count<generator::Event>()) + " events of the month, of which " +
        std::to_string(alarms.size()) + " name a zone; they were read in " + passed + ".");
}

void prune()
{
    chapter("Keeping the history short");
    constexpr std::uint32_t date = generator::Centre::historyStart + 20 * 86400;
    say("A client throws old events away now and then, but an alarm that somebody still has to settle must stay. Such "
        "events carry the affect flag, and clearEventsBeforeDateExceptAffects leaves them. It leaves also those that "
        "do not say whether they carry it. All before and on " +
        timeText(&date) + ":");
    const std::array<std::size_t, 3> before = countByFlag();
    const Stopwatch stopwatch;
    expect(clearEventsBeforeDateExceptAffects(date), "clearEventsBeforeDateExceptAffects");
    const std::string passed = stopwatch.milliseconds();
    const std::array<std::size_t, 3> after = countByFlag();
    const auto row = [&](const std::string &flag, std::size_t i) {
        return std::vector<std::string>{flag, std::to_string(before[i]), std::to_string(before[i] - after[i]),
                                        std::to_string(after[i])};
    };
    Table table({"affect flag", "events before", "removed", "kept"});
    table.add(row("no", 1));
    table.add(row("yes", 2));
    table.add(row("not said", 0));
    table.print();
    if (before[2] != after[2] || before[0] != after[0] || before[1] == after[1])
        throw std::runtime_error("pruning removed the wrong events");

    Events affecting;
    expect(getAffectEvents(affecting.out(), affecting.count()), "getAffectEvents");
    const api::Event &oldest = *std::ranges::min_element(
        affecting, {}, [](const api::Event &event) { return event.time == nullptr ? endOfTime : *event.time; });
    const std::u16string request = generator::deleteRequest<generator::Event>(oldest.id);
    Event settled;
    expect(removeAffectFlag(settled.out(), units(request), length(request)), "removeAffectFlag");
    expect(clearEventsBeforeDateExceptAffects(date), "clearEventsBeforeDateExceptAffects");
    say("That took " + passed + ". getAffectEvents lists the " + std::to_string(affecting.size()) +
        " that stayed for their flag. When the oldest of them, of " + timeText(oldest.time) +
        ", is settled, removeAffectFlag takes the flag off, and the next pruning takes the event: " +
        std::to_string(countByFlag()[2]) + " are left.");
}

} // namespace demo
