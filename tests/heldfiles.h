#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

/// What a launch may find in its directory.
namespace client {

using Files = std::map<std::string, std::string>; ///< Their contents, by name.

Files filesHere();

/// Puts files into the current directory, in place of all others.
void lay(const Files &files);

struct Held {
    std::string name;
    Files files;
    std::string users = "8";  ///< As `getUsers` gives them.
    std::string content = {}; ///< All that the file holds.

    [[nodiscard]] bool isNothing() const { return files.empty(); }
    [[nodiscard]] bool isClean() const { return name == "a file that was left cleanly"; }
};

/// Nothing, and the same records as a clean exit, a kill, other programs and a power cut leave them.
const std::vector<Held> &allHeld();

} // namespace client
