#include "demo/cache.h"
#include "demo/chapters.h"
#include "demo/table.h"

namespace demo {

namespace {

std::string localeName(const api::Locale *locale)
{
    return locale == nullptr ? "–" : utf8(locale->description);
}

void addRow(Table &table, const api::User &user)
{
    table.add({std::to_string(user.id), utf8(user.name), utf8(user.contacts), yesOrNo(user.isActive),
               number(user.roles), user.domain == nullptr ? "–" : utf8(user.domain->name),
               user.domain == nullptr ? "–" : localeName(user.domain->locale)});
}

Table userTable()
{
    return Table({"id", "name", "contacts", "active", "roles", "domain", "the domain's locale"});
}

} // namespace

void filter(const generator::Centre &centre)
{
    chapter("Asking for some of them");
    const std::u16string field = u"domain";
    const std::string value = std::to_string(centre.make<generator::Domain>(3).id);
    const std::u16string valueUnits = utf16(value);
    say("getUsersWithParams gives the records of which one field equals a value. The field goes by its JSON key, the "
        "value is a text. Here: \"domain\" equal to \"" +
        value + "\".");
    Users users;
    expect(getUsersWithParams(users.out(), users.count(), units(field), length(field), units(valueUnits),
                              length(valueUnits)),
           "getUsersWithParams");
    Table table = userTable();
    for (const api::User &user : users)
        addRow(table, user);
    table.print();
}

void update(const generator::Centre &centre)
{
    chapter("When a record changes");
    constexpr std::uint32_t index = 2;
    const std::u16string request = recordRequest(centre.makeChange<generator::User>(index, 3));
    say("An update carries only what has changed, and leaves every other field as it was. It hands back the record as "
        "it is stored now. The server says");
    show({utf8(request)});
    User before;
    User after;
    expect(getUser(before.out(), generator::User::firstId + index), "getUser");
    expect(updateUser(after.out(), units(request), length(request)), "updateUser");
    say("The user before and after:");
    Table table = userTable();
    addRow(table, *before);
    addRow(table, *after);
    table.print();

    const std::uint32_t device = generator::Device::firstId + 5;
    generator::Zone moved;
    moved.id = 1;
    const std::u16string move = zoneRequest(device, 2, moved);
    Zone zone;
    expect(updateZone(zone.out(), units(move), length(move)), "updateZone");
    say("A zone that the server names under another section moves there, and keeps what it is. The zone “" +
        utf8(zone->name) + "” is in section 2 after");
    show({utf8(move)});
}

void deleteSome(const generator::Centre &centre)
{
    chapter("When a record goes");
    const std::uint32_t userId = generator::User::firstId + 1;
    const std::u16string userRequest = generator::deleteRequest<generator::User>(userId);
    expect(deleteUser(units(userRequest), length(userRequest)), "deleteUser");
    User gone;
    const unsigned int found = getUser(gone.out(), userId);
    expect(found, "getUser of a deleted user", TARNEL_NOT_FOUND);
    say("deleteUser with " + utf8(userRequest) + " removes one user. Asked for it again, getUser returns " +
        std::to_string(found) + ": not found.");

    const generator::Domain domain = centre.make<generator::Domain>(0);
    const std::u16string domainRequest = generator::deleteRequest<generator::Domain>(domain.id);
    expect(deleteDomain(units(domainRequest), length(domainRequest)), "deleteDomain");
    say("Deleting the domain " + utf8(*domain.name) +
        " leaves its users in place. They keep its number, and get the domain back as soon as the server sends it "
        "again; until then they read without it:");
    User user;
    expect(getUser(user.out(), generator::User::firstId), "getUser");
    Table table = userTable();
    addRow(table, *user);
    table.print();

    const std::uint32_t deviceId = generator::Device::firstId;
    const std::u16string deviceRequest = generator::deleteRequest<generator::Device>(deviceId);
    Device device;
    expect(getDevice(device.out(), deviceId), "getDevice");
    expect(deleteDevice(units(deviceRequest), length(deviceRequest)), "deleteDevice");
    Sections sections;
    expect(getSections(sections.out(), sections.count(), deviceId), "getSections of a deleted device",
           TARNEL_NOT_FOUND);
    say("What is part of another record goes with it: device " + std::to_string(deviceId) + " takes its " +
        std::to_string(device->sectionsCount) + " sections with their zones and its " +
        std::to_string(device->deviceUsersCount) +
        " users with it. Its events stay in the file, and getEvents gives them again once the device is back.");
}

void beRefused()
{
    chapter("When the server sends nonsense");
    const std::u16string request = u"{\"D\":{\"items\":[{\"id\":900,\"name\":\"Nikolaj\"},{\"id\":\"901\"}]}}";
    const unsigned int refused = addUsers(units(request), length(request));
    expect(refused, "addUsers of a wrong request", TARNEL_INVALID_REQUEST);
    User user;
    expect(getUser(user.out(), 900), "getUser of a refused user", TARNEL_NOT_FOUND);
    say("A request is accepted whole or not at all. In this one the second identifier is a text, so addUsers returns " +
        std::to_string(refused) + " and user 900, who was fine, is not stored either:");
    show({utf8(request)});
}

} // namespace demo
