#pragma once

#include "entities/field.h"

#include <algorithm>

/// Whether two C structures hold the same: a loop over the record's field list, like their conversion and release.
namespace tarnelLib::api {

template <class Record>
bool isEqual(const controller::ApiOf<Record> &left, const controller::ApiOf<Record> &right);

/// Optional values are equal if both are absent, or both are there and equal.
template <class Value, class IsEqual>
bool comparePtr(const Value *left, const Value *right, IsEqual &&isEqualValue)
{
    if (left == nullptr || right == nullptr)
        return left == right;
    return isEqualValue(*left, *right);
}

/// The equality of each kind of row.
class MemberEquality
{
public:
    template <class Record, class Api>
    static bool isEqual(const controller::Id<Record, Api> &field, const Api &left, const Api &right)
    {
        return left.*field.apiMember == right.*field.apiMember;
    }

    template <class Api>
    static bool isEqual(const controller::ParentKey &, const Api &, const Api &)
    {
        return true;
    }

    template <controller::HoldsValue Row, class Api>
    static bool isEqual(const Row &field, const Api &left, const Api &right)
    {
        return isEqualMember(left.*field.apiMember, right.*field.apiMember);
    }

    /// A nested record.
    template <class Row, class Api>
    static bool isEqual(const Row &field, const Api &left, const Api &right)
    {
        return comparePtr(left.*field.apiMember, right.*field.apiMember, api::isEqual<typename Row::Nested>);
    }

    template <class Record, class Item, class Api, class ApiItem>
    static bool isEqual(const controller::Children<Record, Item, Api, ApiItem> &field, const Api &left,
                        const Api &right)
    {
        const ApiItem *items = left.*field.apiMember;
        const ApiItem *others = right.*field.apiMember;
        return std::equal(items, items + left.*field.apiCount, others, others + right.*field.apiCount,
                          [](const ApiItem &item, const ApiItem &other) { return isEqualItem<Item>(item, other); });
    }

private:
    /// A text that is absent is as good as an empty one.
    static bool isEqualMember(const unsigned short *left, const unsigned short *right)
    {
        constexpr unsigned short empty = 0;
        const auto view = [&](const unsigned short *text) {
            return std::u16string_view(reinterpret_cast<const char16_t *>(text != nullptr ? text : &empty));
        };
        return view(left) == view(right);
    }

    template <class Value>
    static bool isEqualMember(const Value *left, const Value *right)
    {
        return comparePtr(left, right, std::equal_to<>());
    }

    template <class Item, class ApiItem>
    static bool isEqualItem(const ApiItem &item, const ApiItem &other)
    {
        if constexpr (std::is_arithmetic_v<Item>)
            return item == other;
        else
            return api::isEqual<Item>(item, other);
    }
};

template <class Record>
bool isEqual(const controller::ApiOf<Record> &left, const controller::ApiOf<Record> &right)
{
    return std::apply([&](const auto &...field) { return (MemberEquality::isEqual(field, left, right) && ...); },
                      controller::Schema<Record>::fields);
}

} // namespace tarnelLib::api
