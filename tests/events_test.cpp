#include "client.h"
#include "controller/storage/sqlitedatabase.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <algorithm>
#include <random>

namespace tarnelLib::controller {

namespace {

using Random = std::mt19937;

/// A number below `end`, or nothing now and then.
std::optional<quint32> maybe(Random &random, quint32 end)
{
    const auto number = static_cast<quint32>(random()) % (end + end / 8 + 1);
    return number < end ? std::optional(number) : std::nullopt;
}

template <class Value>
std::optional<Value> as(std::optional<quint32> number, quint32 offset = 0)
{
    return number ? std::optional(static_cast<Value>(*number - offset)) : std::nullopt;
}

std::optional<Text> maybeText(Random &random)
{
    static const Text texts[] = {Text(u""), Text(u"motion"), Text(u"дверь \U0001f6aa")};
    const auto index = maybe(random, 3);
    return index ? std::optional(texts[*index]) : std::nullopt;
}

/// Events with identifiers in no order, some of them twice, of devices, sections and zones that may not be stored.
std::vector<Event> randomEvents(Random &random)
{
    std::vector<Event> events;
    for (int i = 0; i < 3000; ++i) {
        Event event{.id = static_cast<quint32>(random() % 4000), .time = maybe(random, 50)};
        event.deviceId = as<qint32>(maybe(random, 40), 5);
        event.sectionId = maybe(random, 5);
        event.zoneId = maybe(random, 9);
        event.userId = maybe(random, 12);
        event.affect = as<bool>(maybe(random, 2));
        event.data = maybeText(random);
        events.push_back(std::move(event));
    }
    return events;
}

void addWhatEventsBorrowFrom(SQLiteDatabase &database, Random &random)
{
    std::vector<Device> devices;
    for (quint32 id = 0; id < 30; ++id) {
        Device device{.id = id, .account = maybe(random, 1000)};
        for (quint32 section = 0; section < 4; ++section) {
            device.sections.push_back({.id = section, .name = maybeText(random)});
            device.sections.back().zones.push_back({.id = 2 * section, .name = maybeText(random)});
        }
        devices.push_back(std::move(device));
    }
    std::vector<User> users;
    std::vector<Domain> domains;
    for (quint32 id = 0; id < 10; ++id) {
        users.push_back({.id = id, .domainId = maybe(random, 6)});
        if (id < 4)
            domains.push_back({.id = id, .name = maybeText(random)});
    }
    ASSERT_TRUE(database.add(devices) && database.add(users) && database.add(domains));
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
        Random random(seed);
        SQLiteDatabase database;
        const QString path = QString::number(seed);
        ASSERT_TRUE(database.restoreDatabase(path));
        addWhatEventsBorrowFrom(database, random);

        std::vector<Event> sent = randomEvents(random);
        // None, or one that does not come back as it was given.
        const std::u16string_view oddTexts[] = {u"", u"a\uffffb", u"\ufeffa", {u"a\xd800", 2}, {u"\xdc00z", 2}};
        sent.push_back({.id = 4500, .time = 7, .deviceId = 3, .jData = Text(oddTexts[seed % std::size(oddTexts)])});
        std::vector<Event> answered = sent;
        ASSERT_TRUE(database.add(answered));
        EXPECT_GT(answered.size(), 1000U);

        // An event of no device, whose text is changed by the storage, makes the answer one that is read back.
        std::vector<Event> readBack = sent;
        readBack.push_back({.id = 5000, .data = Text(u"\ufeff")});
        ASSERT_TRUE(database.add(readBack));
        EXPECT_TRUE(readBack == answered);

        std::vector<Event> lookedUp;
        std::vector<Event> joined;
        ASSERT_TRUE(database.get(lookedUp, 0, 100));
        for (quint32 time = 0; time <= 100; ++time)
            ASSERT_TRUE(database.get(joined, time, time));
        EXPECT_GT(lookedUp.size(), 1000U);
        EXPECT_TRUE(lookedUp == joined);
        std::ranges::sort(lookedUp, {}, &Event::id);
        std::erase_if(answered, [](const Event &event) { return !event.time; });
        EXPECT_TRUE(lookedUp == answered);
    }
}

} // namespace tarnelLib::controller
