#include "bench/alone.h"

#include "bench/baseline/baseline.h"
#include "bench/process.h"
#include "bench/statistics.h"

#include <malloc.h>
#include <sys/resource.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <random>

namespace bench {

namespace {

constexpr int steadyCalls = 5;
constexpr const char *costFormat = "%lf %zu %lf %lu";

/// A size that the system gives in its account of the process, such as "VmHWM".
std::size_t accountedBytes(const std::string &name)
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        std::size_t kibibytes = 0;
        if (word == name + ":" && status >> kibibytes)
            return kibibytes * 1024;
    }
    throw std::runtime_error("the system does not account for memory");
}

/// Pages that the system had to give to the process, and did not have to read.
long pagesGiven()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

/// Blocks of a client that has been at work: of all sizes, every other one released again, in an order of the number's.
class UsedHeap
{
public:
    explicit UsedHeap(unsigned int number)
    {
        std::mt19937 random(number);
        constexpr std::size_t count = 50000;
        for (std::size_t i = 0; i < count; ++i)
            m_blocks.emplace_back(std::size_t{1} << random() % (i % 1000 == 0 ? 20 : 12));
        std::shuffle(m_blocks.begin(), m_blocks.end(), random);
        m_blocks.resize(count / 2);
    }

private:
    std::vector<std::vector<char>> m_blocks;
};

Cost costOf(const std::string &sideName, const std::vector<std::string> &arguments)
{
    Cost cost;
    if (std::sscanf(outputOfOwnProcess(arguments).c_str(), costFormat, &cost.seconds, &cost.bytes, &cost.faults,
                    &cost.digest) != 4)
        throw std::runtime_error("no figures of the " + sideName + " alone");
    return cost;
}

} // namespace

Cost costHere(const Workload &workload, const Options &options)
{
    // Lists of before make a heap of their own.
    std::optional<UsedHeap> heap;
    if (options.alone->start != 0 && !workload.before)
        heap.emplace(options.alone->start);
    std::unique_ptr<Side> side;
    if (options.alone->side == librarySide)
        side = std::make_unique<Library>();
    else
        side = std::make_unique<Baseline>(baselineFile);
    if (workload.before)
        runOnce(workload.before, *side, options.clock);
    const Task task = workload.prepare();
    Cost cost;
    // What SQLite keeps of the file, and how malloc sets itself up for lists of this size, is there from now on.
    if (!workload.isWriting) {
        cost.digest = runOnce(task, *side, options.clock).digest;
        runOnce(task, *side, options.clock);
    }
    // What was used before and is free now would hide what the call takes. A heap in use stays as it is.
    if (options.alone->start == 0)
        ::malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5"; // Lets the peak begin anew.
    const std::size_t before = accountedBytes("VmRSS");
    const std::uint64_t digest = runOnce(task, *side, options.clock).digest;
    cost.bytes = accountedBytes("VmHWM") - before;
    if (workload.isWriting) {
        cost.digest = digest;
        return cost;
    }
    std::vector<double> seconds(steadyCalls);
    const long pagesBefore = pagesGiven();
    for (double &call : seconds)
        call = runOnce(task, *side, options.clock).seconds;
    cost.faults = static_cast<double>(pagesGiven() - pagesBefore) / steadyCalls;
    cost.seconds = median(seconds);
    return cost;
}

void tell(const Cost &cost)
{
    std::printf("%.9f %zu %.1f %lu\n", cost.seconds, cost.bytes, cost.faults, cost.digest);
}

Costs costsAlone(const Workload &workload, const Options &options, unsigned int start)
{
    Costs costs;
    const auto measureSide = [&](const char *side, Cost &cost) {
        cost = costOf(side, options.argumentsFor({side, start}, workload.name));
    };
    // By turns, the one and the other goes first.
    if (start % 2 == 0)
        measureSide(librarySide, costs.library);
    measureSide(baselineSide, costs.baseline);
    if (start % 2 == 1)
        measureSide(librarySide, costs.library);
    return costs;
}

Measurement measureStarts(const Workload &workload, const Options &options)
{
    Measurement measurement;
    for (unsigned int start = 1; start <= options.starts; ++start) {
        const Costs costs = costsAlone(workload, options, start);
        measurement.library.push_back(costs.library.seconds);
        measurement.baseline.push_back(costs.baseline.seconds);
        measurement.isSame = measurement.isSame && costs.isSame();
    }
    return measurement;
}

} // namespace bench
