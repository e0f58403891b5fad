#pragma once

#include "entities/field.h"

#include <algorithm>

/// Whether two C structures hold the same, by the record's field list. Part of the library's contract, and called by
/// tests alone: no exported function compares.
namespace tarnelLib::api {

template <class Record>
bool isEqual(const controller::ApiOf<Record> &left, const controller::ApiOf<Record> &right);

/// A text that is absent is as good as an empty one.
inline std::u16string_view viewOf(const unsigned short *text)
{
    return text != nullptr ? reinterpret_cast<const char16_t *>(text) : u"";
}

template <class Row, class Api>
bool isEqualMember(const Row &row, const Api &left, const Api &right)
{
    const auto item = left.*row.apiMember;
    const auto other = right.*row.apiMember;
    const auto isEqualItem = [](const auto &one, const auto &another) {
        if constexpr (std::is_class_v<std::remove_cvref_t<decltype(one)>>)
            return isEqual<typename Row::Nested>(one, another);
        else
            return one == another;
    };
    if constexpr (controller::is<Row, controller::Id>)
        return item == other;
    else if constexpr (controller::is<Row, controller::Children>)
        return std::equal(item, item + left.*row.apiCount, other, other + right.*row.apiCount, isEqualItem);
    else if constexpr (std::is_same_v<decltype(item), unsigned short *const>)
        return viewOf(item) == viewOf(other);
    else if (item == nullptr || other == nullptr)
        return item == other;
    else
        return isEqualItem(*item, *other);
}

template <class Record>
bool isEqual(const controller::ApiOf<Record> &left, const controller::ApiOf<Record> &right)
{
    bool areEqual = true;
    controller::forEachField<Record>([&]<class Row>(const Row &row) {
        if constexpr (!controller::isParentKey<Row>)
            areEqual = areEqual && isEqualMember(row, left, right);
    });
    return areEqual;
}

} // namespace tarnelLib::api
