#include "circumstances.h"
#include "databasefile.h"
#include "exports.h"
#include "failures.h"
#include "faults/faultvfs.h"
#include "heldfiles.h"

#include <iostream>
#include <optional>
#include <random>

/// Ends in the middle of anything: what was acknowledged is in the file afterwards, and of the call in progress all or
/// nothing.
namespace client {

namespace {

using namespace std::chrono_literals;

/// Files as a client may find them, after so many calls of the story.
struct Chapter {
    Files files;
    std::size_t calls = 0;
};

/// What a client writes, call by call, and what the file holds after each.
class Story
{
public:
    Story()
    {
        takeLog(); // From now on nobody prints it.
        addCalls("add", 1);
        for (const char *batch : {"addUsers", "addEvents"})
            m_calls.emplace_back([=] {
                return call(batch, {items(R"({"id":#,"name":"many at once","device":1,"time":#})", 1000, 1299)});
            });
        for (const char *verb : {"update", "remove", "set", "clearEvents"})
            addCalls(verb, 1);
        addCalls("add", 2);
        addCalls("delete", 1);
        addCalls("clearAllExcept", 1);
        addCalls("add", 3);
        addCalls("clear", 3);
        addCalls("add", 4);
        tell();
    }

    [[nodiscard]] std::size_t size() const { return m_calls.size(); }
    [[nodiscard]] bool isAcknowledged(std::size_t index) const { return m_calls[index]() == m_answers[index]; }
    [[nodiscard]] const Chapter &anyChapter(std::mt19937 &random) const
    {
        return m_chapters[random() % m_chapters.size()];
    }

    /// Expects the file in the current directory to hold what the first calls wrote, and perhaps the next one, too.
    void expectAfter(std::size_t calls) const
    {
        unsigned int result = 0;
        {
            const RunningCache cache;
            result = getLaunchCacheResult();
        }
        const std::string found = content();
        if (calls == 0 && result == TARNEL_DATABASE_RECREATED_VERSION_MISMATCH)
            return;
        EXPECT_TRUE(result == TARNEL_SUCCESS || (calls == 0 && result == TARNEL_DATABASE_CREATED)) << result;
        EXPECT_TRUE(found == m_contents[calls] || (calls < size() && found == m_contents[calls + 1]))
            << "after " << calls << " calls";
        EXPECT_EQ(ask("PRAGMA integrity_check"), "ok\n");
    }

private:
    void addCalls(const std::string &verb, unsigned int id)
    {
        for (const Export &function : exports()) {
            if (function.name.starts_with(verb))
                m_calls.emplace_back([&function, id] { return function.callWith(id); });
        }
    }

    /// Makes the calls, in a few launches.
    void tell()
    {
        const TemporaryDirectory directory;
        m_chapters = {{}, {{{"CacheDb", "garbage"}}}};
        std::optional<RunningCache> cache(std::in_place);
        m_contents = {content()};
        for (const auto &each : m_calls) {
            m_answers.push_back(each());
            EXPECT_TRUE(m_answers.back()[0] == '0' || m_answers.back() == "8") << m_answers.size();
            m_contents.push_back(content());
            if (m_answers.size() % 10 != 0)
                continue;
            cache.reset();
            m_chapters.push_back({filesHere(), m_answers.size()});
            cache.emplace();
        }
    }

    std::vector<std::function<std::string()>> m_calls;
    std::vector<std::string> m_answers;
    std::vector<std::string> m_contents; ///< After none of the calls, after the first, and so on.
    std::vector<Chapter> m_chapters;
};

std::mt19937 seededRandom()
{
    const unsigned int seed = setting("TARNEL_SEED", std::random_device()());
    std::cout << "seed " << seed << '\n';
    return std::mt19937(seed);
}

} // namespace

using Cuts = ParentTest;

TEST_F(Cuts, ofPowerLoseNothing)
{
    using namespace faults;
    const Story story;
    std::mt19937 random = seededRandom();
    Tally tally("power cuts");
    for (unsigned int cuts = setting("TARNEL_POWER_CUTS", 500); cuts > 0 && !HasFailure(); --cuts) {
        const Chapter &start = story.anyChapter(random);
        std::size_t calls = start.calls;
        const std::size_t end = std::min(story.size(), calls + random() % 20);
        offerSharedMemory(random() % 4 != 0);
        lay(start.files);
        PowerCut cut;
        keepUnflushed(&cut);
        failOperations(Write | Sync | Truncate | Delete, Failure::InputOutput,
                       {true, true, static_cast<int>(random() % 200)});
        {
            const RunningCache cache;
            while (calls < end && story.isAcknowledged(calls))
                ++calls;
        }
        endFailures();
        keepUnflushed(nullptr);
        offerSharedMemory(true);
        cut.leaveFiles(random);
        story.expectAfter(calls);
        tally.count();
    }
}

TEST_F(Cuts, byAKillLoseNothing)
{
    const Story story;
    std::mt19937 random = seededRandom();
    SharedNumber acknowledged;
    Tally tally("kills");
    for (unsigned int kills = setting("TARNEL_KILLS", 100); kills > 0 && !HasFailure(); --kills) {
        const Chapter &start = story.anyChapter(random);
        lay(start.files);
        *acknowledged = static_cast<unsigned int>(start.calls);
        const std::size_t callsOfLaunch = 1 + random() % 20;
        Child child([&] {
            while (*acknowledged < story.size()) {
                const RunningCache cache;
                const std::size_t end = std::min(story.size(), *acknowledged + callsOfLaunch);
                while (*acknowledged < end && story.isAcknowledged(*acknowledged))
                    ++*acknowledged;
            }
            std::this_thread::sleep_for(2s); // Until it is killed.
        });
        // A second after a write the log is folded.
        std::this_thread::sleep_for(random() % 50 == 0 ? 1s : 0s);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30000));
        child.kill();
        story.expectAfter(*acknowledged);
        tally.count();
    }
}

} // namespace client
