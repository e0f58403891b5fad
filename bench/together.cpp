#include "bench/together.h"

namespace bench {

namespace {

constexpr std::uint32_t storedSites = 2000;
constexpr std::uint32_t storedEvents = 300000;
constexpr std::uint32_t readCalls = 61; ///< A prime: threads that begin together do not stay so.
constexpr std::uint32_t stride = 7919;

/// Gives both sides their files, and the fixture's records.
generator::Centre provide(Fixtures &fixtures, unsigned int divisor)
{
    generator::Centre centre = sitesOf(storedSites / divisor, storedEvents / divisor);
    fixtures.provide(sitesAndEventsFixture(centre));
    return centre;
}

} // namespace

Stage::Stage(Fixtures &fixtures, unsigned int divisor, std::function<void(const TogetherRow &)> print)
    : m_divisor(divisor), m_print(std::move(print)), m_centre(provide(fixtures, divisor))
{
}

std::chrono::duration<double> Stage::period(double times) const
{
    return std::chrono::seconds(4) * times / m_divisor;
}

Calls Stage::gettingUser()
{
    std::vector<Task> tasks;
    for (std::uint32_t i = 0; i < readCalls; ++i) {
        const std::uint32_t id = generator::User::firstId + i * stride % m_centre.count<generator::User>();
        tasks.emplace_back([id](Side &side, Answers &answers) { side.getUser(id, answers); });
    }
    return {m_library, tasks};
}

Calls Stage::gettingEvents()
{
    constexpr std::uint32_t rows = 100;
    std::vector<Task> tasks;
    for (std::uint32_t i = 0; i < readCalls; ++i) {
        const std::uint32_t first = i * stride % (m_centre.count<generator::Event>() - rows);
        const std::uint32_t from = *m_centre.make<generator::Event>(first).time;
        const std::uint32_t to = *m_centre.make<generator::Event>(first + rows - 1).time;
        tasks.emplace_back([=](Side &side, Answers &answers) { side.getEvents(from, to, answers); });
    }
    return {m_library, tasks};
}

Calls Stage::gettingDevices()
{
    return {m_library, {[](Side &side, Answers &answers) { side.getDevices(answers); }}};
}

Calls Stage::addingEvents(std::uint32_t firstBatch, std::uint32_t batches, std::uint32_t events)
{
    const std::uint32_t first = m_centre.count<generator::Event>() + firstBatch * events;
    std::vector<Task> tasks;
    for (std::uint32_t i = 0; i < batches; ++i) {
        const auto request =
            std::make_shared<const std::u16string>(siteEventsRequest(m_centre, first + i * events, events));
        tasks.emplace_back([request](Side &side, Answers &answers) { side.addEvents(*request, answers); });
    }
    return {m_library, tasks};
}

Calls Stage::addingSites()
{
    const auto request = std::make_shared<const std::u16string>(regularSitesRequest(m_centre));
    return {m_library, {[request](Side &side, Answers &) { side.addSites(*request); }}};
}

std::vector<TogetherWorkload> togetherWorkloads()
{
    return {{"W11", measureReadsBesideWrites}, {"W11-large", measureReadsBesideLargeWrites},
            {"W12", measureReaders},           {"W13-adds", measureAdders},
            {"W13-log", measureLog},           {"W14", measureWrapper}};
}

} // namespace bench
