#include "bench/sameness.h"

#include <string_view>

namespace sameness {

namespace api = tarnelLib::api;

namespace {

/// Compares what the pointers point to, unless both are null.
template <class Value, class Compare>
bool isSame(const Value *one, const Value *other, Compare compare)
{
    return one == nullptr || other == nullptr ? one == other : compare(*one, *other);
}

template <class Value>
bool isSameNumber(const Value *one, const Value *other)
{
    return isSame(one, other, [](Value left, Value right) { return left == right; });
}

bool isSameText(const unsigned short *one, const unsigned short *other)
{
    return isSame(one, other, [](const unsigned short &left, const unsigned short &right) {
        return std::u16string_view(reinterpret_cast<const char16_t *>(&left)) ==
               std::u16string_view(reinterpret_cast<const char16_t *>(&right));
    });
}

bool isSame(const api::Domain *one, const api::Domain *other)
{
    return isSame(one, other, [](const api::Domain &left, const api::Domain &right) {
        return left.id == right.id && isSameText(left.name, right.name) && isSameNumber(left.orgId, right.orgId) &&
               sameness::isSame(left.locale, right.locale);
    });
}

} // namespace

bool isSame(const api::Locale *one, const api::Locale *other)
{
    return isSame(one, other, [](const api::Locale &left, const api::Locale &right) {
        return left.id == right.id && isSameText(left.iso, right.iso) &&
               isSameText(left.description, right.description);
    });
}

bool isSame(const api::User *one, const api::User *other)
{
    return isSame(one, other, [](const api::User &left, const api::User &right) {
        return left.id == right.id && isSameText(left.name, right.name) && isSameText(left.login, right.login) &&
               isSameText(left.contacts, right.contacts) && isSameNumber(left.isActive, right.isActive) &&
               isSameNumber(left.domainId, right.domainId) && isSameNumber(left.orgId, right.orgId) &&
               isSameNumber(left.roles, right.roles) && isSame(left.domain, right.domain) &&
               isSameNumber(left.phone, right.phone);
    });
}

} // namespace sameness
