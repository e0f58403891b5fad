#include "demo/cache.h"
#include "demo/table.h"
#include "generator/centre.h"

#include <chrono>
#include <cstdio>
#include <iostream>

/// A client of the library, from its first launch to its last exit. It uses the public header alone; the records come
/// from a generator in the place of a server.
namespace demo {

namespace {

constexpr unsigned int recordsPerRequest = 100;
constexpr unsigned int rowsShown = 12;

/// How long something took, for people.
class Stopwatch
{
public:
    [[nodiscard]] std::string milliseconds() const
    {
        const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - m_start;
        char text[32];
        std::snprintf(text, sizeof text, "%.1f ms", passed.count());
        return text;
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

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

/// Sends all records of a kind, as a server would at the start of a session.
template <class Record, class Add>
std::string feed(const generator::Centre &centre, const std::string &kind, Add &&add)
{
    const Stopwatch stopwatch;
    unsigned int requests = 0;
    centre.forEachAddRequest<Record>(recordsPerRequest, [&](const std::u16string &request) {
        expect(add(units(request), length(request)), "add" + kind);
        ++requests;
    });
    return "add" + kind + ": " + std::to_string(centre.count<Record>()) + " records in " + std::to_string(requests) +
           (requests == 1 ? " call, " : " calls, ") + stopwatch.milliseconds();
}

void fillCache(const generator::Centre &centre)
{
    chapter("Feeding it");
    say("Records go in as JSON texts in UTF-16, just as a server might send them. One call is one transaction: when it "
        "has returned 0, its records are on the disk. The request that brings the first two domains is");
    show({utf8(addRequest(centre.make<generator::Domain>(0, 2)))});
    show({feed<generator::Locale>(centre, "Locales", addLocales),
          feed<generator::Domain>(centre, "Domains", addDomains), feed<generator::User>(centre, "Users", addUsers)});
}

void listAll()
{
    chapter("Reading it back");
    say("What comes out are plain C structures, put together from all the tables that a record touches: a domain names "
        "its locale by a number, and is read back with that locale inside.");
    Domains domains;
    expect(getDomains(domains.out(), domains.count()), "getDomains");
    Table domainTable({"id", "domain", "locale", "iso", "organization"});
    for (const api::Domain &domain : domains)
        domainTable.add({std::to_string(domain.id), utf8(domain.name), localeName(domain.locale),
                         domain.locale == nullptr ? "–" : utf8(domain.locale->iso), number(domain.orgId)});
    domainTable.print();

    say("The operators of the centre, each with its domain and that domain's locale. A dash is a field that the server "
        "did not send: absent stays absent, it never turns into 0 or an empty text.");
    Users users;
    const Stopwatch stopwatch;
    expect(getUsers(users.out(), users.count()), "getUsers");
    const std::string passed = stopwatch.milliseconds();
    Table table = userTable();
    for (const api::User *user = users.begin(); user != users.end() && user < users.begin() + rowsShown; ++user)
        addRow(table, *user);
    table.print();
    say("These are the first " + std::to_string(std::min(rowsShown, users.size())) + " of " +
        std::to_string(users.size()) + " users, all read in " + passed + ".");
}

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

void restart(const TemporaryDirectory &directory, unsigned int usersBefore)
{
    chapter("After a restart");
    const auto size = std::filesystem::file_size(directory.path() / "CacheDb");
    say("The cache has been exited. What it knew is in one SQLite file, CacheDb, of " + std::to_string(size / 1024) +
        " KiB, and nothing else is left in the directory. Tomorrow morning the program starts again, with the line to "
        "the server down:");
    const Stopwatch stopwatch;
    const RunningCache cache;
    const std::string passed = stopwatch.milliseconds();
    Users users;
    expect(getLaunchCacheResult(), "getLaunchCacheResult of a second launch");
    expect(getUsers(users.out(), users.count()), "getUsers");
    if (users.size() != usersBefore)
        throw std::runtime_error("users were lost");
    show({"launch result 0 (the stored records were kept), running after " + passed,
          std::to_string(users.size()) + " users at hand"});
}

unsigned int countUsers()
{
    Users users;
    expect(getUsers(users.out(), users.count()), "getUsers");
    return users.size();
}

void run()
{
    const generator::Centre centre(1, {.sites = 200, .events = 12000});
    const TemporaryDirectory directory;

    chapter("TarnelLib");
    say("A centre guards shops, schools and warehouses. When one of them reports something, the operator's program "
        "must "
        "show at once what is known about the place, also when the server is slow or cannot be reached. So the program "
        "keeps all of it beside itself: it pushes the records into TarnelLib as they arrive from the server, and reads "
        "them back when it needs them. This is such a program, with a made-up centre.");

    unsigned int users = 0;
    {
        chapter("Starting");
        say("One thread calls launchCache and stays in it; the others wait until getState says 2 (running) and then "
            "look at how the launch went.");
        const RunningCache cache;
        const unsigned int launched = getLaunchCacheResult();
        expect(launched, "getLaunchCacheResult", TARNEL_DATABASE_CREATED);
        show({"directory      " + directory.path().string(), "state          " + std::to_string(getState()),
              "launch result  " + std::to_string(launched) + " (there was no file; a new one was made)"});
        say("Qt, on which the library rests, remarks on its standard error output that the main thread did not make "
            "its application object. That is as intended.");

        fillCache(centre);
        listAll();
        filter(centre);
        update(centre);
        deleteSome(centre);
        beRefused();
        users = countUsers();
    }
    restart(directory, users);
    say("That is all. The temporary directory goes now; a real client keeps it.");
}

} // namespace

} // namespace demo

int main()
{
    try {
        demo::run();
        return 0;
    } catch (const std::exception &failure) {
        std::cerr << "The demo failed: " << failure.what() << '\n';
        return 1;
    }
}
