#pragma once

#include "entities/event.h"
#include "entities/user.h"
#include "storage/querypreparer.h"

#include <array>
#include <memory_resource>
#include <unordered_map>

namespace tarnelLib::controller {

/// Fills in what events borrow from other tables, and reads each row there once: for many events that costs a fraction
/// of a join for each of them.
class EventNames
{
public:
    explicit EventNames(QueryPreparer &preparer);

    /// Fills in what the event borrows. False if its device is not stored, as for an inner join, or after a failure.
    [[nodiscard]] bool lendTo(api::Event &event);

    /// Why a row could not be read; null if all could.
    [[nodiscard]] const Failure *failure() const { return m_failure; }

private:
    using Name = std::pmr::u16string;

    /// What is known of the rows of one table, by their identifiers.
    template <class Value, std::size_t size>
    struct Known {
        using Identifiers = std::array<qint64, size>;
        struct Hash {
            std::size_t operator()(const Identifiers &identifiers) const
            {
                quint64 hash = 0;
                for (const qint64 identifier : identifiers)
                    hash = (hash ^ static_cast<quint64>(identifier)) * 0x9e3779b97f4a7c15;
                return hash ^ hash >> 32;
            }
        };
        struct Row {
            bool isStored = false;
            std::optional<Value> value;
        };

        Known(Query &&lookUp, std::pmr::memory_resource &memory) : query(std::move(lookUp)), rows(&memory) {}

        Query query;
        std::pmr::unordered_map<Identifiers, Row, Hash> rows;
    };

    static unsigned short *copyOf(const std::optional<Name> &name) { return name ? Text(*name).release() : nullptr; }

    template <class Value, std::size_t size, class... Identifiers>
    const typename Known<Value, size>::Row &find(Known<Value, size> &known, Identifiers... identifiers);

    /// Side by side: what is looked up lies in few pages, however many blocks the events have between them.
    std::pmr::monotonic_buffer_resource m_memory;
    Known<quint32, 1> m_accounts;
    Known<Name, 2> m_sections;
    Known<Name, 3> m_zones;
    Known<Name, 1> m_domains; ///< By the user.
    const Failure *m_failure = nullptr;
};

} // namespace tarnelLib::controller
