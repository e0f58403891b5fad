#pragma once

#include "bench/fixtures.h"
#include "bench/task.h"

#include <vector>

namespace bench {

/// What is measured for both sides.
struct Workload {
    std::string name;
    std::string description;
    Fixture fixture;
    bool isWriting; ///< Then each round begins with a fresh file, and what it holds is compared too.
    int rounds;
    std::function<Task()> prepare; ///< Makes the requests.
    Task before = {};              ///< What has come and gone in the process before. May be empty.
};

/// All of them. `divisor` makes them smaller by as much.
std::vector<Workload> workloads(unsigned int divisor);

/// Lists that are measured in processes of their own, each of which has had other blocks of memory before.
std::vector<Workload> startWorkloads(unsigned int divisor);

} // namespace bench
