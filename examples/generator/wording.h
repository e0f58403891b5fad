#pragma once

#include "generator/languages.h"
#include "generator/random.h"

#include <string>

/// Names, addresses and numbers in a language, from a stream of random numbers.
namespace generator {

std::u16string decimal(std::uint64_t number);

/// So many random digits.
std::u16string digits(Random &random, int count);

/// A pattern of `Language` with its places filled in.
std::u16string worded(u16string_view pattern, const Language &language, Random &random);

std::u16string personName(const Language &language, Random &random);
std::u16string address(const Language &language, const City &city, Random &random);
std::u16string phoneNumber(const Language &language, Random &random);

} // namespace generator
