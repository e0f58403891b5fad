#include "databasefile.h"
#include "exports.h"
#include "failures.h"
#include "faults/faultmemory.h"
#include "faults/faultvfs.h"

#include <algorithm>

/// Memory and disks that fail, one request after the other.
namespace client {

namespace {

using faults::Faults;

/// A resource: makes requests for it fail, and ends that; the latter tells whether one has failed.
struct Resource {
    std::function<void(Faults)> begin;
    std::function<bool()> end;
};

Resource disk(unsigned int operations)
{
    return {[=](Faults requests) {
                failOperations(operations, faults::Failure::DiskFull, requests, std::this_thread::get_id());
            },
            [] { return faults::endFailures().failed > 0; }};
}

/// Makes a call's first request fail, then its second, and so on, until the call does not get to that one any more.
void expectEveryFailureIs(const std::string &code, const Resource &resource, const Export &function, int leastFailures)
{
    std::vector<Step> steps = stepsOf(function.name);
    std::erase_if(steps, [](const Step &step) { return step.code != "9"; });
    for (const bool isLasting : {false, true}) {
        const TemporaryDirectory directory;
        const RunningCache cache;
        addOneOfEverything();
        // What is written is stored before the record that is handed back is built.
        const bool isStored = code == "3" && !function.isRead() && function.handsOutRecords;
        bool hasFailed = true;
        for (int request = 0; hasFailed; ++request) {
            SCOPED_TRACE(function.name + ", request " + std::to_string(request) +
                         (isLasting ? " and all after it" : ""));
            const std::string before = content();
            takeLog();
            resource.begin({true, isLasting, request});
            const std::string answer = function.callWith(1);
            hasFailed = resource.end();
            ASSERT_EQ(hasFailed ? answer : answer.substr(0, 1), hasFailed ? code : "0");
            ASSERT_TRUE(hasFailed || request >= leastFailures);
            if (hasFailed && code == "9") // The disk is written to by the commit, which ends the last step.
                expectLogOf(steps.back());
            ASSERT_TRUE(!hasFailed || isStored || content() == before);
        }
    }
}

} // namespace

TEST(Faults, everyRefusedAllocationIs3)
{
    const Resource memory = {[](Faults requests) { faults::libraryMemory = requests; },
                             [] { return std::exchange(faults::libraryMemory, {}).hasStruck(); }};
    for (const Export &function : exports())
        expectEveryFailureIs("3", memory, function, function.handsOutRecords ? 2 : 0);
}

/// What is acknowledged has been written and flushed.
TEST(Faults, everyRefusedWriteIs9)
{
    for (const Export &function : exports()) {
        for (const unsigned int operation : {faults::Write, faults::Sync}) {
            if (!function.isRead())
                expectEveryFailureIs("9", disk(operation), function, 1);
        }
    }
}

} // namespace client
