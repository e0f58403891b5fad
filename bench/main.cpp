#include "bench/baseline.h"
#include "bench/rounds.h"
#include "bench/sameness.h"
#include "generator/centre.h"
#include "tests/client.h"

#include <tarnel/tarnel.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <stdexcept>

namespace {

namespace api = tarnelLib::api;

constexpr int roundCount = 7;
constexpr double secondsPerRead = 0.2;
constexpr int writesPerMeasurement = 3;
constexpr generator::Scale scale = {.sites = 50000, .events = 0}; ///< Makes 10,000 users of 2,500 domains.

void require(bool isMet, const char *expectation)
{
    if (!isMet)
        throw std::runtime_error(expectation);
}

const unsigned short *units(const std::u16string &text)
{
    return reinterpret_cast<const unsigned short *>(text.data());
}

template <class Record>
void fill(const generator::Centre &centre, unsigned int (*add)(const unsigned short *, unsigned int))
{
    centre.forEachAddRequest<Record>(centre.count<Record>(), [&](const std::u16string &request) {
        require(add(units(request), static_cast<unsigned int>(request.size())) == TARNEL_SUCCESS, "records are added");
    });
}

/// The identifiers of all records of a kind, in the order in which they are asked for.
template <class Record>
std::vector<unsigned int> shuffledIds(const generator::Centre &centre)
{
    std::vector<unsigned int> ids(centre.count<Record>());
    std::iota(ids.begin(), ids.end(), Record::firstId);
    std::shuffle(ids.begin(), ids.end(), std::mt19937(1));
    return ids;
}

/// Goes round and round through identifiers.
class Cycle
{
public:
    explicit Cycle(const std::vector<unsigned int> &ids) : m_ids(&ids) {}
    unsigned int next()
    {
        m_position = m_position + 1 < m_ids->size() ? m_position + 1 : 0;
        return (*m_ids)[m_position];
    }

private:
    const std::vector<unsigned int> *m_ids;
    std::size_t m_position = 0;
};

/// Waits until the library has folded its log, as it does by itself soon after a write.
void waitForFoldedLog()
{
    require(client::waitUntil([] { return std::filesystem::file_size("CacheDb-wal") == 0; }), "the log is folded");
}

template <class Read>
void measureRead(const char *name, Read read)
{
    benchmark::RegisterBenchmark(name, [read](benchmark::State &state) mutable {
        for ([[maybe_unused]] auto iteration : state)
            read();
    })->MinTime(secondsPerRead);
}

/// `prepare` sees to it that the log is empty, and that the library does not fold it meanwhile.
template <class Prepare, class Write>
void measureWrite(const char *name, Prepare prepare, Write write)
{
    benchmark::RegisterBenchmark(name,
                                 [prepare, write](benchmark::State &state) {
                                     prepare();
                                     for ([[maybe_unused]] auto iteration : state)
                                         write();
                                 })
        ->Iterations(writesPerMeasurement)
        ->UseRealTime();
}

void requireSameAnswers(baseline::Connection &connection, const std::vector<unsigned int> &localeIds,
                        const std::vector<unsigned int> &userIds)
{
    for (const unsigned int id : localeIds) {
        api::Locale *locale = nullptr;
        require(getLocale(&locale, id) == TARNEL_SUCCESS, "every locale is read");
        api::Locale *expected = connection.getLocale(id);
        require(sameness::isSame(locale, expected), "both sides read the same locale");
        freeLocale(locale);
        baseline::freeLocale(expected);
    }
    for (const unsigned int id : userIds) {
        api::User *user = nullptr;
        require(getUser(&user, id) == TARNEL_SUCCESS, "every user is read");
        api::User *expected = connection.getUser(id);
        require(sameness::isSame(user, expected), "both sides read the same user");
        freeUser(user);
        baseline::freeUser(expected);
    }
    api::User *users = nullptr;
    unsigned int count = 0;
    require(getUsers(&users, &count) == TARNEL_SUCCESS && count == userIds.size(), "all users are read");
    unsigned int expectedCount = 0;
    api::User *expected = connection.getUsers(expectedCount);
    require(count == expectedCount, "both sides read the same number of users");
    for (unsigned int i = 0; i < count; ++i)
        require(sameness::isSame(users + i, expected + i), "both sides list the same users");
    freeUsersArray(users, count);
    baseline::freeUsers(expected, expectedCount);
}

void run()
{
    const client::TemporaryDirectory directory;
    const client::RunningCache cache;
    const generator::Centre centre(1, scale);
    fill<generator::Locale>(centre, addLocales);
    fill<generator::Domain>(centre, addDomains);
    fill<generator::User>(centre, addUsers);
    waitForFoldedLog();

    baseline::Connection connection("CacheDb");
    const std::vector<unsigned int> localeIds = shuffledIds<generator::Locale>(centre);
    const std::vector<unsigned int> userIds = shuffledIds<generator::User>(centre);
    requireSameAnswers(connection, localeIds, userIds);

    measureRead("getLocale/library", [ids = Cycle(localeIds)]() mutable {
        api::Locale *locale = nullptr;
        getLocale(&locale, ids.next());
        freeLocale(locale);
    });
    measureRead("getLocale/baseline",
                [&, ids = Cycle(localeIds)]() mutable { baseline::freeLocale(connection.getLocale(ids.next())); });
    measureRead("getUser/library", [ids = Cycle(userIds)]() mutable {
        api::User *user = nullptr;
        getUser(&user, ids.next());
        freeUser(user);
    });
    measureRead("getUser/baseline",
                [&, ids = Cycle(userIds)]() mutable { baseline::freeUser(connection.getUser(ids.next())); });
    measureRead("getUsers/library", [] {
        api::User *users = nullptr;
        unsigned int count = 0;
        getUsers(&users, &count);
        freeUsersArray(users, count);
    });
    measureRead("getUsers/baseline", [&] {
        unsigned int count = 0;
        api::User *users = connection.getUsers(count);
        baseline::freeUsers(users, count);
    });

    // The baseline has its values at hand, where the library is given JSON.
    const std::vector<generator::User> users = centre.make<generator::User>(0, centre.count<generator::User>());
    const std::u16string request = generator::addRequest(users);
    const auto length = static_cast<unsigned int>(request.size());
    measureWrite(
        "addUsers/library", [&] { connection.foldLog(); }, [&] { addUsers(units(request), length); });
    measureWrite("addUsers/baseline", waitForFoldedLog, [&] { connection.addUsers(users); });

    Rounds rounds;
    for (int round = 0; round < roundCount; ++round) {
        benchmark::RunSpecifiedBenchmarks(&rounds);
        connection.foldLog();
    }
    rounds.print();
}

} // namespace

/// Times are of the processor for reads, and of the clock for what waits for the disk.
int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return EXIT_FAILURE;
    try {
        run();
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "failed: %s\n", failure.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
