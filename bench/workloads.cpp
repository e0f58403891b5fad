#include "bench/workloads.h"

#include "bench/contents.h"

#include <memory>

namespace bench {

namespace {

using generator::Centre;

constexpr int manyRounds = 7;
constexpr int diskRounds = 21; ///< Where the disk has the last word, and a whim.
constexpr int fewRounds = 5;   ///< Where a round takes many seconds.

using Requests = std::vector<std::u16string>;

/// A task that sends requests one after the other.
Task sending(Requests requests, void (Side::*send)(std::u16string_view, Answers &))
{
    return [requests = std::make_shared<Requests>(std::move(requests)), send](Side &side, Answers &answers) {
        for (const std::u16string &request : *requests)
            (side.*send)(request, answers);
    };
}

Workload addingEvents(const std::string &name, std::uint32_t events, int rounds)
{
    const Centre centre = historyOf(events);
    return {
        name,
        "addEvents of " + withCommas(events) + " events, 1,000 known devices",
        historyFixture("devices", centre, 0),
        true,
        rounds,
        [=] { return sending({generator::addRequest(centre.make<generator::Event>(0, events))}, &Side::addEvents); }};
}

Workload gettingEvents(const std::string &name, std::uint32_t events, int rounds)
{
    return {name, "getEvents of " + withCommas(events) + " rows", historyFixture(events), false, rounds, [] {
                return [](Side &side, Answers &answers) { side.getEvents(0, ~0U, answers); };
            }};
}

/// Reads records one by one, in an order that jumps through all of them.
Workload gettingOnes(const std::string &name, const char *call, std::uint32_t calls, const Fixture &fixture,
                     std::uint32_t firstId, std::uint32_t records, void (Side::*get)(unsigned int, Answers &))
{
    constexpr std::uint32_t stride = 7919; // A prime.
    return {name, withCommas(calls) + " " + call, fixture, false, manyRounds, [=] {
                return [=](Side &side, Answers &answers) {
                    for (std::uint32_t i = 0; i < calls; ++i)
                        (side.*get)(firstId + i * stride % records, answers);
                };
            }};
}

Workload durableWrites(std::uint32_t calls, std::uint32_t storedEvents)
{
    const Centre centre = historyOf(storedEvents);
    return {"W6",
            withCommas(calls) + " addEvent and " + withCommas(calls) + " updateUser, each durable",
            historyFixture(storedEvents),
            true,
            diskRounds,
            [=] {
                Requests events;
                Requests users;
                const std::uint32_t userCount = centre.count<generator::User>();
                for (std::uint32_t i = 0; i < calls; ++i) {
                    events.push_back(generator::recordRequest(centre.make<generator::Event>(storedEvents + i)));
                    users.push_back(
                        generator::recordRequest(centre.makeChange<generator::User>(i % userCount, i / userCount)));
                }
                return [add = sending(std::move(events), &Side::addEvent),
                        update = sending(std::move(users), &Side::updateUser)](Side &side, Answers &answers) {
                    add(side, answers);
                    update(side, answers);
                };
            }};
}

Workload gettingShortLists(std::uint32_t calls, std::uint32_t storedEvents)
{
    constexpr std::uint32_t rows = 100;
    const Centre centre = historyOf(storedEvents);
    return {
        "W7", withCommas(calls) + " getEvents of about 100 rows", historyFixture(storedEvents), false, manyRounds, [=] {
            std::vector<std::pair<std::uint32_t, std::uint32_t>> ranges;
            for (std::uint32_t i = 0; i < calls; ++i) {
                const std::uint32_t first = i * 7919 % (storedEvents - rows);
                ranges.emplace_back(*centre.make<generator::Event>(first).time,
                                    *centre.make<generator::Event>(first + rows - 1).time);
            }
            return [ranges](Side &side, Answers &answers) {
                for (const auto &[from, to] : ranges)
                    side.getEvents(from, to, answers);
            };
        }};
}

Workload addingToFullTable(std::uint32_t calls, std::uint32_t storedEvents)
{
    constexpr std::uint32_t batch = 100;
    const Centre centre = historyOf(storedEvents);
    return {"W8",
            withCommas(calls) + " addEvents of 100 events into " + withCommas(storedEvents),
            historyFixture(storedEvents),
            true,
            manyRounds,
            [=] {
                Requests requests;
                for (std::uint32_t i = 0; i < calls; ++i)
                    requests.push_back(
                        generator::addRequest(centre.make<generator::Event>(storedEvents + i * batch, batch)));
                return sending(std::move(requests), &Side::addEvents);
            }};
}

Workload gettingAffects(std::uint32_t storedEvents)
{
    return {"W9",
            "getAffectEvents of " + withCommas(storedEvents / eventsPerAffect) + " among " + withCommas(storedEvents),
            historyFixture(storedEvents),
            false,
            manyRounds,
            [] { return [](Side &side, Answers &answers) { side.getAffectEvents(answers); }; }};
}

Workload pruning(std::uint32_t removed, std::uint32_t storedEvents)
{
    // All but one in a thousand before the date are removed.
    const std::uint32_t last = removed + removed / (eventsPerAffect - 1) - 1;
    const std::uint32_t date = *historyOf(storedEvents).make<generator::Event>(last).time;
    return {"W10",
            "clearEventsBeforeDateExceptAffects removing " + withCommas(removed) + " of " + withCommas(storedEvents),
            historyFixture(storedEvents),
            true,
            manyRounds,
            [=] { return [=](Side &side, Answers &) { side.clearEventsBeforeDateExceptAffects(date); }; }};
}

} // namespace

std::vector<Workload> workloads(unsigned int divisor)
{
    const auto scaled = [divisor](std::uint32_t number) { return number / divisor; };
    const std::uint32_t siteCount = scaled(2000);
    const Centre sites = sitesOf(siteCount, 0);
    // Each regular site has the first of the devices that the generator gives it.
    const auto firstDevices = [](std::uint32_t site) { return Centre::firstDeviceOfSite(site); };
    return {
        addingEvents("W1", scaled(100000), manyRounds),
        gettingEvents("W2", scaled(100000), manyRounds),
        {"W3", "addSites of " + withCommas(siteCount) + " sites with a device each", surroundingsFixture(sites), true,
         manyRounds,
         [=] { return [request = regularSitesRequest(sites)](Side &side, Answers &) { side.addSites(request); }; }},
        {"W4", "getDevices of " + withCommas(siteCount) + " devices", sitesFixture(sites), false, manyRounds,
         [] { return [](Side &side, Answers &answers) { side.getDevices(answers); }; }},
        {"W4-sites", "getSites of " + withCommas(siteCount) + " sites", sitesFixture(sites), false, manyRounds,
         [] { return [](Side &side, Answers &answers) { side.getSites(answers); }; }},
        {"W5a", withCommas(scaled(10000)) + " getDevice", sitesFixture(sites), false, manyRounds,
         [=] {
             return [=](Side &side, Answers &answers) {
                 for (std::uint32_t i = 0; i < scaled(10000); ++i)
                     side.getDevice(generator::Device::firstId + firstDevices(i * 7919 % siteCount), answers);
             };
         }},
        gettingOnes("W5b", "getUser", scaled(10000), sitesFixture(sites), generator::User::firstId,
                    sites.count<generator::User>(), &Side::getUser),
        gettingOnes("W5c", "getSite", scaled(2000), sitesFixture(sites), generator::Site::firstId, siteCount,
                    &Side::getSite),
        gettingOnes("W5d", "getLocale", scaled(10000), sitesFixture(sites), generator::Locale::firstId,
                    sites.count<generator::Locale>(), &Side::getLocale),
        durableWrites(scaled(500), scaled(100000)),
        gettingShortLists(scaled(500), scaled(100000)),
        addingToFullTable(scaled(200), scaled(300000)),
        gettingAffects(scaled(1000000)),
        pruning(scaled(100000), scaled(300000)),
        addingEvents("W1-small", scaled(10000), manyRounds),
        addingEvents("W1-large", scaled(1000000), fewRounds),
        gettingEvents("W2-small", scaled(10000), manyRounds),
        gettingEvents("W2-large", scaled(1000000), fewRounds),
    };
}

} // namespace bench
