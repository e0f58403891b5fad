#pragma once

#include "bench/callers.h"
#include "bench/contents.h"
#include "bench/unit.h"

#include <optional>

/// Several threads at work with the library at the same time. There is no baseline: what they get together stands
/// beside what they get apart.
namespace bench {

struct TogetherRow {
    std::string description;
    Unit unit;
    double together;
    std::optional<double> apart;
    bool isSame; ///< Whether every call was answered as it is while nothing else goes on.
    std::string remark;
};

/// A library at work, and what is asked of it: 2,000 sites with a device each, and 300,000 events.
class Stage
{
public:
    /// `divisor` makes everything smaller by as much.
    Stage(Fixtures &fixtures, unsigned int divisor, std::function<void(const TogetherRow &)> print);

    /// How long a row is measured, or several times as long.
    [[nodiscard]] std::chrono::duration<double> period(double times = 1) const;
    /// As many as in the workload at its full size.
    [[nodiscard]] std::uint32_t scaled(std::uint32_t number) const { return number / m_divisor; }
    void print(const TogetherRow &row) const { m_print(row); }

    [[nodiscard]] Calls gettingUser();
    /// Of about 100 rows.
    [[nodiscard]] Calls gettingEvents();
    [[nodiscard]] Calls gettingDevices();
    /// So many calls for so many events each, which are none of those stored at first; the batches are numbered.
    [[nodiscard]] Calls addingEvents(std::uint32_t firstBatch, std::uint32_t batches, std::uint32_t events);
    /// All of them, in one call.
    [[nodiscard]] Calls addingSites();

private:
    unsigned int m_divisor;
    std::function<void(const TogetherRow &)> m_print;
    generator::Centre m_centre;
    Library m_library;
};

struct TogetherWorkload {
    std::string name;
    void (*measure)(Stage &);
};

/// All of them.
std::vector<TogetherWorkload> togetherWorkloads();

/// Single calls of a thread while another thread adds without rest.
void measureReadsBesideWrites(Stage &stage);
/// The same with ten times as many events to each call that adds.
void measureReadsBesideLargeWrites(Stage &stage);
/// Threads that read without rest.
void measureReaders(Stage &stage);
/// Threads that add without rest.
void measureAdders(Stage &stage);
/// The log that they leave beside threads that read without rest.
void measureLog(Stage &stage);
/// The same calls through the wrapper for C++ and without it, by one thread.
void measureWrapper(Stage &stage);

} // namespace bench
