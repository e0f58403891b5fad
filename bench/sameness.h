#pragma once

#include <tarnel/tarnel.h>

/// Whether two structures say the same, down to the last member.
namespace sameness {

bool isSame(const tarnelLib::api::Locale *one, const tarnelLib::api::Locale *other);
bool isSame(const tarnelLib::api::User *one, const tarnelLib::api::User *other);

} // namespace sameness
