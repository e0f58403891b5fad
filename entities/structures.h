#pragma once

#include "entities/field.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <new>
#include <span>
#include <utility>

/// The C structures on their way to the client, in `malloc`'d blocks, and their release.
namespace tarnelLib::controller {

/// A value in a block of its own; `std::bad_alloc` if there is no memory.
template <class Value>
Value *allocate(const Value &value)
{
    static_assert(std::is_trivially_copyable_v<Value>);
    if (void *block = std::malloc(sizeof(Value)))
        return new (block) Value(value);
    throw std::bad_alloc();
}

/// What an optional member of a structure points to; null for a value that is absent.
template <class Value>
Value *toMember(const std::optional<Value> &value)
{
    return value ? allocate(*value) : nullptr;
}

inline unsigned short *toMember(std::optional<Text> &&text)
{
    return text ? std::move(*text).release() : nullptr;
}

/// Appends a null element to a list as structures have it: a block with room for `least` elements, which is enough for
/// most lists of parts, or for a higher power of two. The system gives no memory for the unused part of a large block.
template <unsigned int least = 4, class Element>
Element &append(Element *&first, unsigned int &count)
{
    static_assert(std::is_trivially_copyable_v<Element> && std::has_single_bit(least));
    if (count == 0 || (count >= least && std::has_single_bit(count))) {
        void *grown = std::realloc(first, std::max<std::size_t>(least, std::size_t{count} * 2) * sizeof(Element));
        if (grown == nullptr)
            throw std::bad_alloc();
        first = static_cast<Element *>(grown);
    }
    return first[count++] = Element{};
}

template <class Record>
void freeMembers(const ApiOf<Record> &structure);

/// Releases a block of structures, or of identifiers, with all that they own.
template <class Item, class ApiItem>
void freeStructures(ApiItem *items, unsigned int count)
{
    if constexpr (!std::is_arithmetic_v<Item>) {
        for (const ApiItem &item : std::span(items, items != nullptr ? count : 0))
            freeMembers<Item>(item);
    }
    std::free(items);
}

/// Releases all that a structure owns, and leaves its members as they are.
template <class Record>
void freeMembers(const ApiOf<Record> &structure)
{
    forEachField<Record>([&]<class Row>(const Row &row) {
        if constexpr (is<Row, Children>)
            freeStructures<typename Row::Nested>(structure.*row.apiMember, structure.*row.apiCount);
        else if constexpr (isJoined<Row>)
            freeStructures<typename Row::Nested>(structure.*row.apiMember, 1);
        else if constexpr (is<Row, Column> || is<Row, Borrowed>)
            std::free(structure.*row.apiMember);
    });
}

/// Structures that belong to this object until they are released to the client.
template <class Record>
class Structures
{
public:
    using Api = ApiOf<Record>;

    Structures() = default;
    Structures(const Structures &) = delete;
    Structures &operator=(const Structures &) = delete;
    ~Structures() { freeStructures<Record>(m_first, m_count); }

    [[nodiscard]] bool isEmpty() const { return m_count == 0; }
    [[nodiscard]] unsigned int count() const { return m_count; }
    [[nodiscard]] std::span<Api> all() const { return {m_first, m_count}; }

    /// A structure at the end, of which every member is null.
    Api &append() { return controller::append<1>(m_first, m_count); }

    void removeLast() { freeMembers<Record>(m_first[--m_count]); }

    /// Gives the block away, to be released with `freeStructures`; null if there are no structures.
    [[nodiscard]] Api *release() &&
    {
        m_count = 0;
        return std::exchange(m_first, nullptr);
    }

private:
    Api *m_first = nullptr;
    unsigned int m_count = 0;
};

} // namespace tarnelLib::controller
