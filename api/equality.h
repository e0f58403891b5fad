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

/// Apart from the lambda below, in which clang 14 would look for `Nested` in every row.
template <class Row, class Item>
bool isEqualItem(const Item &left, const Item &right)
{
    if constexpr (std::is_class_v<Item>)
        return isEqual<typename Row::Nested>(left, right);
    else
        return left == right;
}

template <class Row, class Api>
bool isEqualMember(const Row &row, const Api &left, const Api &right)
{
    const auto item = left.*row.apiMember;
    const auto other = right.*row.apiMember;
    const auto areEqual = [](const auto &one, const auto &another) { return isEqualItem<Row>(one, another); };
    if constexpr (controller::is<Row, controller::Id>)
        return item == other;
    else if constexpr (controller::is<Row, controller::Children>)
        return std::equal(item, item + left.*row.apiCount, other, other + right.*row.apiCount, areEqual);
    else if constexpr (std::is_same_v<decltype(item), unsigned short *const>)
        return viewOf(item) == viewOf(other);
    else
        return item == other || (item != nullptr && other != nullptr && areEqual(*item, *other));
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
