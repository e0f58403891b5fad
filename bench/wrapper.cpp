#include "bench/statistics.h"
#include "bench/together.h"

#include <tarnel/tarnel.hpp>

/// What the wrapper costs: the same calls through it, and through the functions that it wraps.
namespace bench {

namespace {

constexpr unsigned int rounds = 9;

/// The mean time of a call for each of `ids`; `call` says whether it was answered.
template <class Call>
double secondsOf(const std::vector<unsigned int> &ids, Call &&call, bool &isSame)
{
    const auto begin = std::chrono::steady_clock::now();
    for (const unsigned int id : ids)
        isSame = call(id) && isSame;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() /
           static_cast<double>(ids.size());
}

/// Both take turns, as the machine's speed drifts.
template <class Through, class Direct>
void measureBoth(Stage &stage, const std::string &name, const std::vector<unsigned int> &ids, Through &&through,
                 Direct &&direct)
{
    std::vector<double> together;
    std::vector<double> apart;
    bool isSame = true;
    for (unsigned int round = 0; round < rounds; ++round) {
        together.push_back(secondsOf(ids, through, isSame));
        apart.push_back(secondsOf(ids, direct, isSame));
    }
    stage.print({name + " through the wrapper, against the C functions", units::fineMilliseconds, median(together),
                 median(apart), isSame, std::to_string(rounds) + " rounds"});
}

} // namespace

void measureWrapper(Stage &stage)
{
    const tarnel::Cache cache; // What it wraps is the process's: it need not have started it itself.
    std::vector<unsigned int> users;
    for (const tarnel::User &user : cache.all<tarnel::User>().value())
        users.push_back(user.id);
    std::vector<unsigned int> ids;
    for (std::uint32_t i = 0; i < stage.scaled(10000); ++i)
        ids.push_back(users[i % users.size()]);
    measureBoth(
        stage, "getUser", ids, [&](unsigned int id) { return cache.get<tarnel::User>(id)->id == id; },
        [](unsigned int id) {
            tarnel::User *user = nullptr;
            return getUser(&user, id) == TARNEL_SUCCESS && user->id == id && freeUser(user) == TARNEL_SUCCESS;
        });
    measureBoth(
        stage, "getEvents of all", {0}, [&](unsigned int) { return cache.events(0, UINT32_MAX)->size() > 1; },
        [](unsigned int) {
            tarnel::Event *list = nullptr;
            unsigned int count = 0;
            return getEvents(&list, &count, 0, UINT32_MAX) == TARNEL_SUCCESS && count > 1 &&
                   freeEventsArray(list, count) == TARNEL_SUCCESS;
        });
}

} // namespace bench
