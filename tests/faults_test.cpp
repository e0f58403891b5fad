#include "circumstances.h"
#include "databasefile.h"
#include "exports.h"
#include "failures.h"
#include "heldfiles.h"

#include <tarnel/diagnostics.h>

#include <algorithm>
#include <optional>

/// Calls, exits and foldings on disks and with memory that fail, one request after the other: the code is true, the
/// file whole, and the next call and the next launch find it.
namespace client {

namespace {

using namespace std::chrono_literals;
using Cache = std::optional<RunningCache>;

/// Where the journal is, there is a log for reads beside writes, or a disk without shared memory.
enum class Journal { Log, None };

/// What is done while requests fail.
struct Act {
    std::string name;
    std::function<std::string(Cache &)> run; ///< Gives the answer.
    std::vector<Step> steps = {};            ///< Those that may fail.
    bool mayBeStored = false; ///< When 3 or 7 is the answer: it writes, and then reads and builds a record.
    bool isRead = false;
};

Act callOf(const Export &function)
{
    const auto run = [&function](Cache &) { return function.callWith(1); };
    return {function.name, run, stepsOf(function.name), !function.isRead() && function.handsOutRecords,
            function.isRead()};
}

/// Launches the cache on a file with a record of each kind, and something in its log.
void launch(Cache &cache, Journal journal)
{
    lay(allHeld()[2].files);
    faults::offerSharedMemory(journal == Journal::Log);
    cache.emplace();
    faults::offerSharedMemory(true);
    ASSERT_EQ(getLaunchCacheResult(), 0U);
    ASSERT_EQ(call("setServerIp", {"1"}), "0");
    ASSERT_EQ(std::filesystem::exists("CacheDb-wal"), journal == Journal::Log);
    takeLog();
}

/// Expects the log of a step that failed with this code; out of memory the library logs nothing.
void expectFailureOf(const Act &act, const std::string &code)
{
    const std::string reason = tarnelReason();
    if (code == "3") {
        EXPECT_EQ(takeLog(), Lines{});
        EXPECT_TRUE(reason == act.name + ": out of memory" || reason == "out of memory") << reason;
        return;
    }
    std::vector<Step> steps = act.steps;
    std::erase_if(steps, [&](const Step &step) { return step.code != code; });
    ASSERT_FALSE(steps.empty()) << "not with the code " << code;
    const std::string logged = expectLogOf(steps);
    const bool hasNoRoom = reason == "the database could not be read" || reason == "the database could not be written";
    EXPECT_TRUE(hasNoRoom ||
                (reason.starts_with(steps.front().function + ": ") && reason.ends_with(" error: " + logged)))
        << reason;
}

/// How an act goes on a disk and with memory that do not fail.
struct Well {
    std::string before;
    std::string answer;
    std::string after;
};

Well wellDone(const Act &act, Journal journal)
{
    Cache cache;
    launch(cache, journal);
    Well well = {content(), act.run(cache), ""};
    well.after = content();
    return well;
}

/// Tells whether a request has failed.
bool meet(const Act &act, const Well &well, const Circumstance &circumstance, faults::Faults requests, Cache &cache)
{
    circumstance.begin(requests);
    const std::string answer = act.run(cache);
    const bool hasStruck = circumstance.end();
    if (answer == well.answer) {
        EXPECT_EQ(takeLog(), Lines{});
        return hasStruck;
    }
    expectFailureOf(act, answer);
    const std::string found = content();
    EXPECT_TRUE(found == well.before || (act.mayBeStored && answer != "9" && found == well.after));
    EXPECT_EQ(act.run(cache), well.answer) << "once more";
    return hasStruck;
}

/// The same in a launch of its own.
bool meetInLaunch(const Act &act, Journal journal, const Well &well, const Circumstance &circumstance,
                  faults::Faults requests)
{
    Cache cache;
    launch(cache, journal);
    const bool hasStruck = meet(act, well, circumstance, requests, cache);
    EXPECT_TRUE(content() == well.after);
    cache.reset();
    EXPECT_TRUE(content() == well.after) << "for the next launch";
    EXPECT_EQ(ask("PRAGMA integrity_check"), "ok\n");
    return hasStruck;
}

void expectTruth(const Act &act, Journal journal, const Circumstance &circumstance, Tally &tally)
{
    SCOPED_TRACE(act.name + (journal == Journal::Log ? "" : ", without a log"));
    const Well well = wellDone(act, journal);
    Cache ofReads;
    if (act.isRead)
        launch(ofReads, journal);
    tryEach(circumstance, [&](faults::Faults requests) {
        const bool hasStruck = act.isRead ? meet(act, well, circumstance, requests, ofReads)
                                          : meetInLaunch(act, journal, well, circumstance, requests);
        tally.count(hasStruck);
        return hasStruck;
    });
}

/// Which of many things is tried in the place with this number; all are, with TARNEL_ALL=1.
bool isTried(std::size_t thing, std::size_t things, std::size_t place)
{
    return thing == place % things || setting("TARNEL_ALL", 0) != 0;
}

} // namespace

using Faults = ParentTest;

TEST_F(Faults, ofTheDiskLeaveCallsTrue)
{
    const std::vector<Circumstance> disks = failingDisks(std::this_thread::get_id());
    Tally tally("calls on a failing disk");
    for (std::size_t i = 0; i < exports().size(); ++i) {
        const Act act = callOf(exports()[i]);
        for (std::size_t disk = 0; disk < disks.size(); ++disk) {
            if ((disk == 0 && !exports()[i].isRead()) || isTried(disk, disks.size(), i))
                expectTruth(act, Journal::Log, disks[disk], tally);
            if (isTried(disk, disks.size(), i + 5))
                expectTruth(act, Journal::None, disks[disk], tally);
        }
    }
}

TEST_F(Faults, ofMemoryLeaveCallsTrue)
{
    std::vector<Circumstance> memory = shortMemory();
    Tally tally("calls that are short of memory");
    for (std::size_t i = 0; i < exports().size(); ++i) {
        // Of reads, and of a write of each kind, every request of the library is tried.
        const bool isThorough = exports()[i].isRead() || exports()[i].name.starts_with("update");
        memory[0].density = isThorough ? 1000 : memory[1].density;
        for (std::size_t j = 0; j < memory.size(); ++j) {
            if (j == 0 || isTried(0, 8, i))
                expectTruth(callOf(exports()[i]), Journal::Log, memory[j], tally);
        }
    }
}

/// Each time it is its thread's first failure, which takes memory to remember: a shorter reason must do without.
TEST_F(Faults, ofMemoryLeaveRefusalsTrue)
{
    Cache cache;
    launch(cache, Journal::Log);
    struct Refusal {
        std::string function;
        std::vector<Argument> inputs;
        std::string code, reason, shortReason;
    };
    const std::string wrongValue = "a key is missing, or a value is of the wrong type";
    const std::string wrongArgument = "an argument cannot be used";
    const Refusal refusals[] = {
        {"updateUser", {item(R"({"id":1,"name":null})")}, "5", R"("name": null, a string is expected)", wrongValue},
        {"updateUser", {"{} {"}, "10", "line 1, offset 3: nothing more is expected", wrongArgument},
        {"getUsersWithParams", {"nmae", "x"}, "10", R"(users have no field "nmae" to filter by)", wrongArgument}};
    Circumstance memory = shortMemory().front();
    memory.density = 1000;
    Tally tally("refusals that are short of memory");
    const auto expectRefusal = [&](const Refusal &refusal, bool isShort) {
        const std::string told = tarnelReason();
        const bool isTrue = told == refusal.function + ": " + refusal.reason ||
                            (isShort && (told == refusal.shortReason || told.ends_with(": " + refusal.shortReason)));
        EXPECT_TRUE(isTrue) << told;
    };
    for (const Refusal &refusal : refusals) {
        tryEach(memory, [&](faults::Faults requests) {
            bool hasStruck = false;
            std::thread([&] {
                memory.begin(requests);
                const std::string answer = call(refusal.function, refusal.inputs);
                hasStruck = memory.end();
                EXPECT_EQ(answer, refusal.code);
                expectRefusal(refusal, hasStruck);
            }).join();
            tally.count(hasStruck);
            return hasStruck;
        });
    }
}

/// A commit copies a long log into the main file, and an exit puts it away.
TEST_F(Faults, ofTheDiskLeaveTheLogWhole)
{
    const std::string request = items(R"({"id":#,"name":")" + std::string(3900, 'n') + "\"}", 1000, 2099);
    const Act exit = {"exit", [](Cache &cache) { return cache.reset(), "0"; }};
    const Act fill = {"long call", [&](Cache &) { return call("addUsers", {request}); }, stepsOf("addUsers")};
    std::vector<Circumstance> disks = failingDisks();
    Tally tally("exits and long calls on a failing disk");
    for (std::size_t disk = 0; disk < disks.size(); ++disk) {
        expectTruth(exit, Journal::Log, disks[disk], tally);
        expectTruth(exit, Journal::None, disks[disk], tally);
        disks[disk].density = 2;
        if (isTried(disk, disks.size(), 0))
            expectTruth(fill, Journal::Log, disks[disk], tally);
    }
}

TEST_F(Faults, ofTheDiskLeaveFoldingTrue)
{
    const Act folding = {"folding", [](Cache &) { return std::this_thread::sleep_for(1200ms), "0"; }};
    const std::vector<Circumstance> disks = failingDisks();
    const Well well = wellDone(folding, Journal::Log);
    Tally tally("foldings on a failing disk");
    for (std::size_t i = 0; i < disks.size() * 2; ++i) {
        const Circumstance &disk = disks[i / 2];
        const bool isLasting = i % 2 != 0;
        if ((disk.times & (isLasting ? Lasting : Once)) == 0 || !isTried(i / 2, disks.size(), 0))
            continue;
        std::vector<std::unique_ptr<Child>> children;
        for (int request = 0; request < 32; ++request)
            children.push_back(std::make_unique<Child>([&, request] {
                const TemporaryDirectory own;
                tally.count(meetInLaunch(folding, Journal::Log, well, disk, {true, isLasting, request}));
            }));
    }
}

} // namespace client
