#pragma once

#include "bench/library.h"
#include "generator/centre.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>

/// The files that workloads begin with, and copies of them for both sides.
namespace bench {

/// Where each side has its file, in the current directory.
constexpr const char *libraryFile = "CacheDb";
constexpr const char *baselineFile = "Baseline";

/// What a file holds; made by the library from the generator's records.
struct Fixture {
    std::string name;
    std::function<void(Side &)> fill;
};

/// Makes each file once, in the current directory, where it stays.
class Fixtures
{
public:
    /// Gives both sides a fresh copy, which is on the disk when this returns. Neither side may be at work.
    void provide(const Fixture &fixture);

private:
    std::map<std::string, std::filesystem::path> m_files;
};

/// Whether both sides' files hold the same rows. Neither side may be at work.
bool haveSameContent();

} // namespace bench
