#pragma once

#include "bench/fixtures.h"

#include <vector>

namespace bench {

/// What is measured: the same calls for both sides.
using Task = std::function<void(Side &, Answers &)>;

struct Workload {
    std::string name;
    std::string description;
    Fixture fixture;
    bool isWriting; ///< Then each round begins with a fresh file, and what it holds is compared too.
    int rounds;
    std::function<Task()> prepare; ///< Makes the requests.
};

/// All of them. `divisor` makes them smaller by as much.
std::vector<Workload> workloads(unsigned int divisor);

/// W1 alone, of which the memory is measured as well.
Workload memoryWorkload(unsigned int divisor);

} // namespace bench
