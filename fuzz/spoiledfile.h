#pragma once

#include "functions.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// A file that the library has filled, and what may become of it.
namespace fuzz {

constexpr std::size_t pageSize = 4096;

std::string readFile(const std::string &name);

/// The line of a call with a request, a filter and an identifier that fit every function.
std::string fittingCall(const Function &function, char id);

/// Adds a record of every kind with all its references, and as many calls of each function as told, with values of all
/// sorts.
void addOfEverything(char id, int madeUp);

/// How a file is changed in one place: so few bytes that an input with several changes is short.
using Change = std::span<const std::uint8_t, 6>;

/// Changes the file where SQLite's format has something: a field of its header, of a page's, a cell, a page.
void spoil(std::string &file, Change change);

} // namespace fuzz
