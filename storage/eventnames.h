#pragma once

#include "entities/event.h"
#include "entities/user.h"
#include "storage/querypreparer.h"

#include <array>
#include <unordered_map>

namespace tarnelLib::controller {

/// Lends events what they borrow from other tables, and asks each row there once: for many events that costs a fraction
/// of the joins that do the same for each event.
class EventNames
{
public:
    explicit EventNames(QueryPreparer &preparer);

    /// Fills in what the event borrows. False if its device is not stored, as for an inner join, or after a failure.
    [[nodiscard]] bool lendTo(Event &event);

    /// The statement that could not be run, if there is one.
    [[nodiscard]] const Statement *failure() const { return m_failure; }

private:
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

        Query query;
        std::unordered_map<Identifiers, Row, Hash> rows;
    };

    template <class Value, std::size_t size, class... Identifiers>
    const typename Known<Value, size>::Row &find(Known<Value, size> &known, Identifiers... identifiers);

    Known<quint32, 1> m_accounts;
    Known<Text, 2> m_sections;
    Known<Text, 3> m_zones;
    Known<Text, 1> m_domains; ///< By the user.
    const Statement *m_failure = nullptr;
};

} // namespace tarnelLib::controller
