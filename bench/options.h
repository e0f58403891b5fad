#pragma once

#include "bench/clock.h"

#include <optional>
#include <string>
#include <vector>

namespace bench {

/// One side at work in a process of its own, in the directory that has its file.
struct Alone {
    std::string side;
    unsigned int start; ///< From 1 on, each finds another heap in use; 0 finds an empty one.
};

/// What the program is told.
struct Options {
    unsigned int divisor = 1; ///< Everything is as many times smaller.
    Clock clock = Clock::Wall;
    bool isMemoryCounted = true;    ///< By SQLite, under a lock of the whole process.
    unsigned int starts = 0;        ///< How many processes a workload has that is measured in its own.
    std::vector<std::string> names; ///< Empty for all.
    std::optional<Alone> alone;     ///< Told by the program to itself only.

    /// A name stands for the sizes of its workload, too: "W1" for "W1-large", and "W5" for "W5a".
    [[nodiscard]] bool isWanted(const std::string &workload) const;
    /// The arguments with which the program starts itself for one side of a workload.
    [[nodiscard]] std::vector<std::string> argumentsFor(const Alone &ownProcess, const std::string &workload) const;
};

/// False for an argument that is none.
[[nodiscard]] bool parse(int argc, char **argv, Options &options);

} // namespace bench
