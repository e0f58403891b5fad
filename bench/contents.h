#pragma once

#include "bench/fixtures.h"

/// What the files hold that workloads begin with, and what is sent to them.
namespace bench {

/// In histories, one event in so many carries the affect flag, and every event says whether it does.
constexpr std::uint32_t eventsPerAffect = 1000;

std::string withCommas(std::uint32_t number);

/// A history of so many events, of 1,000 devices.
generator::Centre historyOf(std::uint32_t events);
/// So many sites, and so many events.
generator::Centre sitesOf(std::uint32_t sites, std::uint32_t events);

/// The devices, and of the history so many events.
Fixture historyFixture(const std::string &name, const generator::Centre &centre, std::uint32_t events);
Fixture historyFixture(std::uint32_t events);

/// All sites, each with one device of 4 sections of 4 zones and 5 users with 2 sections each, and with a location.
std::u16string regularSitesRequest(const generator::Centre &centre);
/// Events of the devices of those.
std::u16string siteEventsRequest(const generator::Centre &centre, std::uint32_t first, std::uint32_t count);

/// All that sites name, but no sites.
Fixture surroundingsFixture(const generator::Centre &centre);
/// The same with the sites.
Fixture sitesFixture(const generator::Centre &centre);
/// The same with their events.
Fixture sitesAndEventsFixture(const generator::Centre &centre);

} // namespace bench
