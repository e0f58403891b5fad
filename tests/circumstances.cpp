#include "circumstances.h"

#include "client.h"
#include "faults/faultmemory.h"

namespace client {

using faults::Faults;

std::vector<Circumstance> failingDisks(std::thread::id thread)
{
    using namespace faults;
    const auto disk = [thread](const char *name, unsigned int operations, Failure failure, Times times,
                               unsigned int launch) {
        const auto begin = [=](Faults requests) { failOperations(operations, failure, requests, thread); };
        return Circumstance{name, times, begin, [] { return endFailures().failed > 0; }, launch};
    };
    return {
        disk("operation", ~0U, Failure::InputOutput, Both, 6),
        disk("read", Read, Failure::InputOutput, Lasting, 6),
        disk("look", Look, Failure::InputOutput, Lasting, 6),
        disk("lock", Lock, Failure::InputOutput, Lasting, 6),
        disk("lock of a held file", Lock, Failure::Locked, Both, 6),
        disk("write", Write, Failure::InputOutput, Lasting, 0),
        disk("flush", Sync, Failure::InputOutput, Lasting, 0),
        disk("truncation or deletion", Truncate | Delete, Failure::InputOutput, Lasting, 0),
        disk("shared memory", SharedMemory, Failure::InputOutput, Lasting, 0),
        disk("write on a full disk", Write | SharedMemory, Failure::DiskFull, Both, 0),
        disk("open without descriptors", Open | SharedMemory, Failure::NoDescriptor, Both, 6),
        disk("open without permission", Open | Delete, Failure::NoPermission, Both, 6),
    };
}

std::vector<Circumstance> shortMemory()
{
    // Each thread has its own.
    using Memory = Faults &(*)();
    const auto memory = [](const char *name, Memory ofThread) {
        const auto begin = [ofThread](Faults requests) { ofThread() = requests; };
        const auto end = [ofThread] { return std::exchange(ofThread(), {}).hasStruck(); };
        return Circumstance{name, Both, begin, end};
    };
    return {memory("allocation", []() -> Faults & { return faults::libraryMemory; }),
            memory("allocation of SQLite's", []() -> Faults & { return faults::sqliteMemory; })};
}

void tryEach(const Circumstance &circumstance, const std::function<bool(Faults)> &run)
{
    const auto density = static_cast<int>(setting("TARNEL_DENSITY", static_cast<unsigned int>(circumstance.density)));
    for (const Times times : {Once, Lasting}) {
        bool isReached = (circumstance.times & times) != 0;
        for (int request = 0; isReached && !testing::Test::HasFailure(); request += 1 + request / density) {
            SCOPED_TRACE(circumstance.name + " " + std::to_string(request) + (times == Lasting ? " and on" : ""));
            isReached = run({true, times == Lasting, request});
        }
    }
}

Tally::~Tally()
{
    printTried(m_what, *m_count);
}

} // namespace client
