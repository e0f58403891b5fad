#pragma once

#include "entities/device.h"
#include "storage/statement.h"

#include <algorithm>

/// Puts the rows of parts under the structures that own them. SQLite yields rows in whatever order suits its plan,
/// which changes with the statistics that any tool may leave in the file.
namespace tarnelLib::controller {

/// Finds structures of one read by their identifiers.
template <class Api>
class OwnerIndex
{
public:
    explicit OwnerIndex(std::span<Api> owners)
    {
        m_owners.reserve(owners.size());
        for (Api &owner : owners)
            m_owners.push_back(&owner);
        std::ranges::sort(m_owners, {}, &Api::id);
    }

    [[nodiscard]] std::vector<quint32> identifiers() const
    {
        std::vector<quint32> identifiers(m_owners.size());
        std::ranges::transform(m_owners, identifiers.begin(), &Api::id);
        return identifiers;
    }

    /// The structure that a row of a part names in a column; null if it is none of this read.
    [[nodiscard]] Api *ownerOf(const Statement &row, int column)
    {
        quint32 id = 0;
        row.read(column, id);
        // Rows mostly come owner by owner.
        if (m_last == nullptr || m_last->id != id) {
            const auto found = std::ranges::lower_bound(m_owners, id, {}, &Api::id);
            m_last = found != m_owners.end() && (*found)->id == id ? *found : nullptr;
        }
        return m_last;
    }

private:
    std::vector<Api *> m_owners; ///< In the order of their identifiers.
    Api *m_last = nullptr;       ///< The one that was found last.
};

/// The part of a sorted list that a row of its own parts names in its second column; null if it is not there.
template <class Part>
Part *findPart(Part *first, unsigned int count, const Statement &row)
{
    quint32 id = 0;
    row.read(1, id);
    Part *const end = first + count;
    Part *const part = std::ranges::lower_bound(first, end, id, {}, &Part::id);
    return part != end && part->id == id ? part : nullptr;
}

/// Clients get parts in the order of their identifiers, which they mostly have.
template <class Part, class Identifier>
void sortParts(Part *first, unsigned int count, Identifier identifier)
{
    if (!std::ranges::is_sorted(first, first + count, {}, identifier))
        std::ranges::sort(first, first + count, {}, identifier);
}

} // namespace tarnelLib::controller
