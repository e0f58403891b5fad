#pragma once

#include "controller/result.h"
#include "entities/field.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// From records to the C structures, and the release of those: loops over the records' field lists.
namespace tarnelLib::api {

/// Memory for one or more values, to be handed to the client; `std::bad_alloc` if there is none.
template <class Value>
Value *allocate(std::size_t count = 1)
{
    static_assert(std::is_trivially_copyable_v<Value>);
    if (void *block = std::malloc(count * sizeof(Value)))
        return static_cast<Value *>(block);
    throw std::bad_alloc();
}

template <class Record>
void freeStructure(controller::ApiOf<Record> &structure);

/// A block of structures on its way to the client. Unless it gets there, it is released with all that it owns.
template <class Record>
class StructureBlock
{
public:
    using Api = controller::ApiOf<Record>;

    explicit StructureBlock(std::size_t capacity) : m_structures(allocate<Api>(capacity)) {}
    StructureBlock(const StructureBlock &) = delete;
    StructureBlock &operator=(const StructureBlock &) = delete;
    ~StructureBlock()
    {
        if (m_structures == nullptr)
            return;
        for (std::size_t i = 0; i < m_count; ++i)
            freeStructure<Record>(m_structures[i]);
        std::free(m_structures);
    }

    /// The next structure, of which every member is null.
    Api &append() { return m_structures[m_count++] = Api{}; }

    [[nodiscard]] Api *release() { return std::exchange(m_structures, nullptr); }

private:
    Api *m_structures;
    std::size_t m_count = 0;
};

/// Fills a structure, of which every member is null, with what the record holds; texts change hands. What is there
/// when it throws can be released with `freeStructure`.
template <class Record>
void toApiStruct(Record &&record, controller::ApiOf<Record> &structure);

template <class Record>
controller::ApiOf<Record> *toApiStruct(Record &&record)
{
    StructureBlock<Record> block(1);
    toApiStruct(std::forward<Record>(record), block.append());
    return block.release();
}

/// One block for all records; null if there are none.
template <class Record>
controller::ApiOf<Record> *toApiStructs(std::vector<Record> &&records)
{
    if (records.empty())
        return nullptr;
    StructureBlock<Record> block(records.size());
    for (Record &record : records)
        toApiStruct(std::move(record), block.append());
    return block.release();
}

inline unsigned int *toApiStructs(std::vector<quint32> &&values)
{
    if (values.empty())
        return nullptr;
    auto *block = allocate<unsigned int>(values.size());
    std::copy(values.begin(), values.end(), block);
    return block;
}

/// Null for a text that is absent.
inline unsigned short *allocateUnicodeString(std::optional<controller::Text> &&text)
{
    return text ? std::move(*text).release() : nullptr;
}

/// The conversion of each kind of row.
class MemberConverter
{
public:
    template <class Record, class Api>
    static void convert(const controller::Id<Record, Api> &field, Record &record, Api &structure)
    {
        structure.*field.apiMember = record.*field.member;
    }

    template <class Record, class Api>
    static void convert(const controller::ParentKey &, Record &, Api &)
    {
    }

    template <class Row, class Record, class Api>
    static void convert(const Row &field, Record &record, Api &structure)
    {
        if (auto &member = record.*field.member)
            structure.*field.apiMember = toMember(std::move(*member));
    }

    template <class Record, class Item, class Api, class ApiItem>
    static void convert(const controller::Children<Record, Item, Api, ApiItem> &field, Record &record, Api &structure)
    {
        std::vector<Item> &items = record.*field.member;
        const auto count = static_cast<unsigned int>(items.size());
        structure.*field.apiMember = toApiStructs(std::move(items));
        structure.*field.apiCount = count;
    }

private:
    static unsigned short *toMember(controller::Text &&text) { return std::move(text).release(); }

    template <class Scalar>
    requires std::is_arithmetic_v<Scalar>
    static Scalar *toMember(Scalar &&value)
    {
        auto *member = allocate<Scalar>();
        *member = value;
        return member;
    }

    template <class Other>
    static controller::ApiOf<Other> *toMember(Other &&other)
    {
        return toApiStruct(std::forward<Other>(other));
    }
};

template <class Record>
void toApiStruct(Record &&record, controller::ApiOf<Record> &structure)
{
    controller::forEachField<Record>([&](const auto &field) { MemberConverter::convert(field, record, structure); });
}

/// The release of each kind of row.
class MemberRelease
{
public:
    template <class Record, class Api>
    static void release(const controller::Id<Record, Api> &, Api &)
    {
    }

    template <class Api>
    static void release(const controller::ParentKey &, Api &)
    {
    }

    template <controller::HoldsValue Row, class Api>
    static void release(const Row &field, Api &structure)
    {
        std::free(std::exchange(structure.*field.apiMember, nullptr));
    }

    /// A nested record.
    template <class Row, class Api>
    static void release(const Row &field, Api &structure)
    {
        if (auto *nested = std::exchange(structure.*field.apiMember, nullptr)) {
            freeStructure<typename Row::Nested>(*nested);
            std::free(nested);
        }
    }

    template <class Record, class Item, class Api, class ApiItem>
    static void release(const controller::Children<Record, Item, Api, ApiItem> &field, Api &structure)
    {
        ApiItem *items = std::exchange(structure.*field.apiMember, nullptr);
        const unsigned int count = std::exchange(structure.*field.apiCount, 0U);
        if constexpr (!std::is_arithmetic_v<Item>) {
            for (unsigned int i = 0; items != nullptr && i < count; ++i)
                freeStructure<Item>(items[i]);
        }
        std::free(items);
    }
};

/// Releases all that a structure owns and leaves its members null; the structure itself is not released.
template <class Record>
void freeStructure(controller::ApiOf<Record> &structure)
{
    controller::forEachField<Record>([&](const auto &field) { MemberRelease::release(field, structure); });
}

} // namespace tarnelLib::api
