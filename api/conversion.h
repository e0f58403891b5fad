#pragma once

#include "controller/entities/field.h"
#include "controller/result.h"

#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// From records to the C structures, and the release of those: loops over the records' field lists.
namespace tarnelLib::api
{

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

/// The conversion of each kind of row.
class MemberConverter
{
public:
    template <class Record, class Api>
    static void convert(const controller::Id<Record, Api> &field, Record &record, Api &structure)
    {
        structure.*field.apiMember = record.*field.member;
    }

    template <class Record, class Value, class Api, class ApiMember>
    static void convert(const controller::Column<Record, Value, Api, ApiMember> &field, Record &record, Api &structure)
    {
        std::optional<Value> &value = record.*field.member;
        if (!value)
            return;
        if constexpr (std::is_same_v<Value, controller::Text>) {
            structure.*field.apiMember = std::move(*value).release();
        } else {
            structure.*field.apiMember = allocate<ApiMember>();
            *(structure.*field.apiMember) = *value;
        }
    }

    template <class Record, class Other, class Api, class ApiMember>
    static void convert(const controller::Reference<Record, Other, Api, ApiMember> &field, Record &record,
                        Api &structure)
    {
        convertNested(record.*field.member, structure.*field.apiMember);
    }

    template <class Record, class Other, class Api, class ApiMember>
    static void convert(const controller::Joined<Record, Other, Api, ApiMember> &field, Record &record, Api &structure)
    {
        convertNested(record.*field.member, structure.*field.apiMember);
    }

private:
    template <class Other, class Api>
    static void convertNested(std::optional<Other> &other, Api *&member)
    {
        if (other)
            member = toApiStruct(std::move(*other));
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

    template <class Record, class Value, class Api, class ApiMember>
    static void release(const controller::Column<Record, Value, Api, ApiMember> &field, Api &structure)
    {
        std::free(std::exchange(structure.*field.apiMember, nullptr));
    }

    template <class Record, class Other, class Api, class ApiMember>
    static void release(const controller::Reference<Record, Other, Api, ApiMember> &field, Api &structure)
    {
        releaseNested<Other>(structure.*field.apiMember);
    }

    template <class Record, class Other, class Api, class ApiMember>
    static void release(const controller::Joined<Record, Other, Api, ApiMember> &field, Api &structure)
    {
        releaseNested<Other>(structure.*field.apiMember);
    }

private:
    template <class Other, class Api>
    static void releaseNested(Api *&member)
    {
        if (member == nullptr)
            return;
        freeStructure<Other>(*member);
        std::free(std::exchange(member, nullptr));
    }
};

/// Releases all that a structure owns and leaves its members null; the structure itself is not released.
template <class Record>
void freeStructure(controller::ApiOf<Record> &structure)
{
    controller::forEachField<Record>([&](const auto &field) { MemberRelease::release(field, structure); });
}

} // namespace tarnelLib::api
