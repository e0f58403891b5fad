#pragma once

#include "tools/tarnel/query.h"
#include "tools/tarnel/records.h"

#include <optional>

namespace tool {

/// Which events are asked for; what is not set does not matter.
struct EventFilter {
    std::optional<std::int64_t> from; ///< Of their times, both ends included.
    std::optional<std::int64_t> to;
    std::optional<std::int64_t> device;
    std::optional<std::int64_t> eventClass;
    bool isAffecting = false;
    bool isHidden = false;             ///< Those of unknown devices alone.
    std::optional<std::int64_t> last;  ///< So many, the latest of them.
    std::optional<std::int64_t> after; ///< Stored after the row of this number.
};

/// Events in the order of their times, each with the names of what it comes from and of who has dealt with it.
class EventQuery
{
public:
    EventQuery(lib::Connection &connection, const EventFilter &filter);

    [[nodiscard]] bool next() { return m_query.next(); }

    /// The event as a client would be handed it out, with the operator's name, and with `hidden` if its device is
    /// unknown: lists leave it out then.
    [[nodiscard]] Json event() const;

private:
    Query m_query;
};

/// The number of the row that was stored last; 0 if there is none.
[[nodiscard]] std::int64_t lastEventRow(lib::Connection &connection);

} // namespace tool
