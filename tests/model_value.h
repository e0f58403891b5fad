#pragma once

#include "model.h"

/// Requests, read as the contract says.
namespace model {

/// Ends a call with a code.
struct Refusal {
    unsigned code;
};

/// A value of a request, which is refused if it has another type.
template <class Wanted>
const Wanted &as(const Value &value)
{
    if (const auto *wanted = std::get_if<Wanted>(&value))
        return *wanted;
    throw Refusal{5};
}

/// A member of a request that must be there.
const Value &member(const Record &object, const std::string &key);

/// A number as an unsigned field keeps it.
double unsignedOf(double number);

/// A record of a request as it is stored. One that has no identifier of its own is given that of its owner.
Record parsed(const Kind &kind, const Record &object, const double *givenId = nullptr);

} // namespace model
