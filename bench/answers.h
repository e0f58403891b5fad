#pragma once

#include "bench/clock.h"

#include <tarnel/tarnel.h>

#include <cstdint>

namespace bench {

namespace api = tarnelLib::api;

/// Takes what calls hand out, looks at all of it, and releases it before the next call, as a client does. The looking
/// is off the clock; the release is not.
class Answers
{
public:
    explicit Answers(Clock clock = Clock::Wall) : m_clock(clock) {}
    Answers(const Answers &) = delete;
    Answers &operator=(const Answers &) = delete;
    ~Answers() = default;

    /// Takes a block of structures, and releases it in the way of the side that has made it.
    template <class Api, class Release>
    void take(Api *first, unsigned int count, Release release)
    {
        look(first, count);
        release(first, count);
    }

    /// A number that follows from every member of every record, in their order.
    [[nodiscard]] std::uint64_t digest() const { return m_digest; }
    /// How many seconds the looking has taken.
    [[nodiscard]] double secondsOffTheClock() const { return m_secondsOffTheClock; }

private:
    /// For events, devices, users, sites and locales.
    template <class Api>
    void look(const Api *first, unsigned int count);

    Clock m_clock;
    std::uint64_t m_digest = 0;
    double m_secondsOffTheClock = 0;
};

} // namespace bench
