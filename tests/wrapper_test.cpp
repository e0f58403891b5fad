#include "client.h"

#include <tarnel/tarnel.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <fstream>

/// The wrapper for C++, as its clients use it.
namespace wrapper {

using namespace tarnel;

template <class Kind, class... Ids>
constexpr bool lists = requires(const Cache &it, Ids... ids)
{
    it.all<Kind>(ids...);
};
template <class Kind>
constexpr bool updates = requires(const Cache &it)
{
    it.update<Kind>("");
};
template <const auto &field, class Value>
constexpr bool takes = std::is_invocable_v<decltype(field), Value>;
static_assert(updates<Zone> && !updates<Locale> && !updates<Device> && lists<Zone, int> && !lists<Zone>);
static_assert(takes<user::id, int> && !takes<user::id, bool> && !takes<user::id, double> && !takes<user::name, int>);
static_assert(takes<user::isActive, bool> && !takes<user::isActive, int>);

struct Wrapper : client::DirectoryTest {
    Cache cache;
    const Launch launch = cache.start().value();
    const std::string odd = "\"Ä\\\n🔑\"";

    template <class Kind, class... Ids>
    void exercise(Field<Kind, unsigned int> id, Field<Kind, Text> name, unsigned short *Kind::*member, Ids... parents)
    {
        if constexpr (sizeof...(Ids) == 0)
            cache.add<Kind>({{id(1), name(odd)}, {id(2)}}).value();
        EXPECT_EQ(cache.all<Kind>(parents...)->size(), 2U);
        EXPECT_EQ(utf8((*cache.get<Kind>(parents..., 1).value()).*member), odd);
        EXPECT_EQ(cache.where(name, odd, parents...).value()[0].id, 1U);
        EXPECT_EQ(cache.where(id, 2, parents...).value()[0].id, 2U);
        if constexpr (updates<Kind>) {
            EXPECT_EQ(text((*cache.update<Kind>({id(2), name(u"ö")}, parents...).value()).*member), u"ö");
            cache.remove<Kind>(parents..., 2).value();
            EXPECT_EQ(cache.get<Kind>(parents..., 2).code(), TARNEL_NOT_FOUND);
        }
    }
};

TEST_F(Wrapper, doesEverythingWithEveryKind)
{
    const std::vector<Fields<Zone>> zones{{zone::id(1), zone::name(odd)}, {zone::id(2)}};
    const Fields<Section> first{section::id(1), section::name(odd), section::zones(zones)};
    cache.addOne<Device>({device::id(1), device::sections({first, {section::id(2)}})}).value();
    exercise(zone::id, zone::name, &Zone::name, 1, 1);
    exercise(section::id, section::name, &Section::name, 1);
    exercise(locale::id, locale::iso, &Locale::iso);
    exercise(domain::id, domain::name, &Domain::name);
    exercise(user::id, user::login, &User::login);
    exercise(organization::id, organization::kpp, &Organization::kpp);
    exercise(contractor::id, contractor::name, &Contractor::name);
    exercise(contract::id, contract::number, &Contract::number);
    exercise(site::id, site::address, &Site::address);
    EXPECT_EQ(utf8(*cache.siteNameAndAddress(1)->address), odd);
    EXPECT_EQ(value(cache.updateFirmware({device::id(1), device::configVersion(3)})->configVersion), 3U);
    EXPECT_EQ(cache.addOne<Event>({event::id(5), event::deviceId(1), event::affect(true)})->id, 5U);
    EXPECT_EQ(cache.add<Event>({{event::id(6), event::deviceId(1), event::time(9)}, {event::id(7)}})->size(), 1U);
    EXPECT_EQ(cache.events(9, 9)->size(), 1U);
    EXPECT_EQ(value(cache.removeAffectFlag(cache.affectEvents().value()[0].id)->affect), false);
    cache.setServerIp("::1").value();
    cache.clearAllExceptEvents().value();
    EXPECT_TRUE(cache.where<User>("login", odd)->empty() && *cache.serverIp() == u"::1");
}

TEST_F(Wrapper, storesWhatIsMeantOrRefusesIt)
{
    cache.add<User>({{user::id(4294967295), user::isActive(true), user::roles(1ULL << 53)}, {user::id(2)}}).value();
    const auto user = cache.update<User>({user::id(2), user::isActive(false), user::name(QString("Ω"))});
    EXPECT_TRUE(value(user->isActive) == false && qstring(user->name) == "Ω" && !value(user->phone));
    EXPECT_EQ(value(cache.where(user::isActive, true).value()[0].roles), 1ULL << 53);
    cache.add<Site>({{site::id(1), site::contractId(-1), site::location({location::latitude(-1e-7)})}}).value();
    const auto site = cache.get<Site>(1);
    EXPECT_TRUE(value(site->contractId) == -1 && value(site->location->latitude) == -1e-7);
    const Fields<DeviceUser> person{deviceUser::id(3), deviceUser::sections({4, 5})};
    cache.add<Device>({{device::id(1), device::deviceUsers({person})}, {device::id(2)}}).value();
    Records<Device> devices = cache.all<Device>().value();
    devices = cache.where(device::id, 1).value();
    for (const DeviceUser &found : list(devices[0].deviceUsers, devices[0].deviceUsersCount))
        EXPECT_EQ(list(found.sections, found.sectionsCount)[1], 5U);
    EXPECT_THROW(std::ignore = user::id(-1), Error);
    EXPECT_THROW(std::ignore = event::active(256), Error);
    EXPECT_THROW(std::ignore = user::roles((1ULL << 53) + 1), Error);
    EXPECT_THROW(std::ignore = location::latitude(NAN), Error);
    EXPECT_THROW(std::ignore = site::contractId(1U << 31), Error);
    EXPECT_THROW(std::ignore = cache.get<User>(1LL << 32), Error);
    const auto refused = cache.update<User>(R"({"D": {"id": null}})");
    EXPECT_TRUE(!refused && refused.get() == nullptr && refused.code() == TARNEL_INVALID_REQUEST);
    EXPECT_EQ(refused.error().what(), "TARNEL_INVALID_REQUEST: " + refused.reason());
    EXPECT_THROW(refused.value(), Error);
    EXPECT_EQ(utf16("é🔑\xC3\xC0\xAF|\xED\xA0\x80|\xF5"), u"é🔑\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD");
    EXPECT_EQ(utf8(std::u16string{u'\uFFFD', 0xDD11, 0xD83D, u'x'}), "\uFFFD\uFFFD\uFFFDx");
}

TEST_F(Wrapper, loadsWholeSlicesAndTellsHowFarItCame)
{
    std::vector<std::size_t> told;
    const auto tell = [&](std::size_t stored) { return told.emplace_back(stored), told.size() != 2; };
    std::vector<std::string> feed;
    for (int i = 0; i < 25; ++i)
        feed.push_back("{\"id\":" + std::to_string(i) + "}");
    Loaded loaded = cache.load<Locale>(feed, {10, tell});
    EXPECT_TRUE(loaded.ok() && loaded.isCancelled && loaded.stored == 20 && cache.all<Locale>()->size() == 20);
    loaded = cache.load<Locale>(feed, {10, tell});
    EXPECT_TRUE(loaded.ok() && !loaded.isCancelled && loaded.stored == 25);
    feed[24] = "{}";
    loaded = cache.load<Domain>(feed, {10, tell});
    EXPECT_TRUE(loaded.code() == TARNEL_INVALID_REQUEST && loaded.stored == 20 && cache.all<Domain>()->size() == 20);
    EXPECT_EQ(told, (std::vector<std::size_t>{10, 20, 10, 20, 25, 10, 20}));
}

TEST_F(Wrapper, isStartedStoppedAndMadeAnew)
{
    EXPECT_EQ(Cache().start().code(), TARNEL_INVALID_ARGUMENT) << "while another runs, which stays";
    cache.add<User>({{user::id(1)}}).value();
    cache.stop();
    for (int round = 0; round < 20; ++round)
        EXPECT_EQ(cache.start({}).code(), TARNEL_NOT_AVAILABLE) << "and its exit is not lost";
    EXPECT_TRUE(launch.isNew() && !cache.start()->isNew() && cache.all<User>()->size() == 1);
    cache.stop();
    std::ofstream("CacheDb") << "garbage";
    EXPECT_EQ(cache.start(std::chrono::hours(1), Recreated::Report).code(), 103U);
    EXPECT_EQ(cache.start()->first, 103U);
    cache.add<User>({{user::id(1)}}).value();
}

TEST_F(Wrapper, endsWithTheApplicationObjectAndTheProcessNotWithItsChild)
{
    cache.stop();
    [[maybe_unused]] const auto run = [] {
        static Cache lasting;
        lasting.start().value();
        int status = 1;
        return ::fork() == 0 ? 0 : (::wait(&status), lasting.all<User>().ok() ? status : 1);
    };
#ifndef __SANITIZE_THREAD__ // Which does not let a child start threads.
    EXPECT_EXIT((::alarm(20), std::exit(run())), testing::ExitedWithCode(0), "");
#endif
    int argumentCount = 0;
    auto app = std::make_unique<QCoreApplication>(argumentCount, nullptr);
    cache.start().value();
    app.reset();
    EXPECT_EQ(cache.state(), TARNEL_STATE_NONE);
}

} // namespace wrapper
