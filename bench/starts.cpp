#include "bench/contents.h"
#include "bench/workloads.h"

namespace bench {

namespace {

struct List {
    std::string name;
    std::string description;
    Task task;
};

void getAllEvents(Side &side, Answers &answers)
{
    side.getEvents(0, ~0U, answers);
}

} // namespace

std::vector<Workload> startWorkloads(unsigned int divisor)
{
    const std::uint32_t siteCount = 2000 / divisor;
    const std::uint32_t rows = 100000 / divisor;
    const std::uint32_t storedEvents = 300000 / divisor;
    const generator::Centre centre = sitesOf(siteCount, storedEvents);
    const std::uint32_t last = *centre.make<generator::Event>(rows - 1).time;
    const std::vector<List> lists{
        {"W2", "getEvents of " + withCommas(rows) + " rows",
         [last](Side &side, Answers &answers) { side.getEvents(0, last, answers); }},
        {"W4", "getDevices of " + withCommas(siteCount),
         [](Side &side, Answers &answers) { side.getDevices(answers); }},
        {"W4-sites", "getSites of " + withCommas(siteCount),
         [](Side &side, Answers &answers) { side.getSites(answers); }},
    };
    std::vector<Workload> workloads;
    for (const auto &[name, description, task] : lists) {
        const auto prepare = [list = task] { return list; };
        const Fixture fixture = sitesAndEventsFixture(centre);
        workloads.push_back({name + "-heaps", description + ", on a heap in use", fixture, false, 0, prepare});
        workloads.push_back({name + "-after", description + ", after " + withCommas(storedEvents) + " events", fixture,
                             false, 0, prepare, getAllEvents});
    }
    return workloads;
}

} // namespace bench
