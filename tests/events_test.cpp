#include "api/equality.h"
#include "client.h"
#include "storage/sqlitedatabase.h"
#include "storage/table.h"

#include <QCoreApplication>

#include <algorithm>
#include <random>

namespace tarnelLib::controller {

namespace {

/// Made-up values, of which some are not there.
struct Random {
    std::mt19937 source;

    std::optional<quint32> number(quint32 end)
    {
        const quint32 value = static_cast<quint32>(source()) % (end + end / 8 + 1);
        return value < end ? std::optional(value) : std::nullopt;
    }
    std::optional<Text> text()
    {
        const std::optional<Text> texts[] = {std::nullopt, Text(u""), Text(u"motion"), Text(u"дверь \U0001f6aa")};
        return texts[source() % std::size(texts)];
    }
};

/// Events with identifiers in no order, some of them twice, of devices, sections and zones that may not be stored.
std::vector<Event> makeEvents(Random &random)
{
    std::vector<Event> events(6000);
    for (Event &event : events) {
        event.id = static_cast<quint32>(random.source() % 8000);
        event.time = random.number(50);
        if (const auto id = random.number(40))
            event.deviceId = static_cast<qint32>(*id) - 5;
        event.sectionId = random.number(5);
        event.zoneId = random.number(9);
        event.userId = random.number(12);
        event.data = random.text();
    }
    return events;
}

/// As clients would find them, and with the same texts absent.
bool areEqual(std::span<api::Event> left, std::span<api::Event> right)
{
    return std::ranges::equal(left, right, [](const api::Event &event, const api::Event &other) {
        const auto areThere = [](const api::Event &e) {
            return std::tuple(e.data != nullptr, e.jData != nullptr, e.sectionName != nullptr, e.zoneName != nullptr,
                              e.domainName != nullptr);
        };
        return api::isEqual<Event>(event, other) && areThere(event) == areThere(other);
    });
}

void addWhatEventsBorrowFrom(WriteConnection &connection, Random &random)
{
    std::vector<Device> devices;
    std::vector<User> users;
    std::vector<Domain> domains;
    for (quint32 id = 0; id < 30; ++id) {
        Device device{.id = id, .account = random.number(1000)};
        for (quint32 section = 0; section < 4; ++section) {
            const Zone zone{.id = 2 * section, .name = random.text()};
            device.sections.push_back({.id = section, .name = random.text(), .zones = {zone}});
        }
        devices.push_back(std::move(device));
        if (id < 10)
            users.push_back({.id = id, .domainId = random.number(6)});
        if (id < 4)
            domains.push_back({.id = id, .name = random.text()});
    }
    ASSERT_TRUE(Table<Device>::add(connection, devices) && Table<User>::add(connection, users) &&
                Table<Domain>::add(connection, domains));
}

} // namespace

/// Names are looked up for many events and joined for few, and what was given is answered unless SQLite changed it.
TEST(Events, areTheSameWhateverTheWayToThem)
{
    const client::TemporaryDirectory directory;
    int argumentCount = 0;
    const QCoreApplication app(argumentCount, nullptr);
    for (unsigned seed = 1; seed <= 10; ++seed) {
        SCOPED_TRACE(seed);
        Random random{std::mt19937(seed)};
        SQLiteDatabase database;
        ASSERT_TRUE(database.restoreDatabase(QString::number(seed)));
        const auto connection = database.write();
        addWhatEventsBorrowFrom(*connection, random);

        std::vector<Event> sent = makeEvents(random);
        // None, or one that does not come back as it was given.
        const std::u16string_view oddTexts[] = {u"", u"a\uffffb", u"\ufeffa", {u"a\xd800", 2}, {u"\xdc00z", 2}};
        sent.push_back({.id = 8500, .time = 7, .deviceId = 3, .jData = Text(oddTexts[seed % std::size(oddTexts)])});
        Structures<Event> answered;
        ASSERT_TRUE(Table<Event>::add(*connection, std::vector(sent), answered));

        // An event of no device, whose text is changed by the storage, makes the answer one that is read back.
        Structures<Event> readBack;
        sent.push_back({.id = 9000, .data = Text(u"\ufeff")});
        ASSERT_TRUE(Table<Event>::add(*connection, std::move(sent), readBack));
        EXPECT_TRUE(areEqual(readBack.all(), answered.all()));

        Structures<Event> lookedUp;
        Structures<Event> joined;
        ASSERT_TRUE(Table<Event>::get(*connection, lookedUp, std::array{0U, 100U}));
        for (quint32 time = 0; time <= 100; ++time)
            ASSERT_TRUE(Table<Event>::get(*connection, joined, std::array{time, time}));
        EXPECT_GT(lookedUp.count(), 2000U);
        EXPECT_TRUE(areEqual(lookedUp.all(), joined.all()));
        std::ranges::sort(lookedUp.all(), {}, &api::Event::id);
        const auto hasTime = [](const api::Event &event) { return event.time != nullptr; };
        const std::span<api::Event> all = answered.all();
        EXPECT_TRUE(areEqual(lookedUp.all(), {all.begin(), std::stable_partition(all.begin(), all.end(), hasTime)}));
    }
}

} // namespace tarnelLib::controller
