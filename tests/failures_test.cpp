#include "databasefile.h"
#include "exports.h"
#include "log.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>

/// What a failing database looks like from outside: codes, log lines, and nothing half-stored.
namespace client {

namespace {

using Lines = std::vector<std::string>;

/// Makes a table fail behind the library's back: "drop Users" drops it, "insert Users" has it refuse these statements.
void breakTable(const std::string &breakage)
{
    const std::string verb = breakage.substr(0, breakage.find(' '));
    const std::string table = breakage.substr(verb.size() + 1);
    ask(verb == "ALTER" ? breakage
        : verb == "drop"
            ? "DROP TABLE " + table
            : "CREATE TRIGGER refusal BEFORE " + verb + " ON " + table + " BEGIN SELECT RAISE(ABORT, 'отказ'); END");
}

/// What a call writes to the log after a table was made to fail.
Lines linesOf(const std::string &function, const std::string &breakage)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    addOneOfEverything();
    breakTable(breakage);
    const auto before = content();
    const Export &operation = exported(function);
    Log log;
    const std::string answer = operation.callWith(1);
    // The parents of a part that was updated are only looked for when it is stored.
    const bool isStored = function.starts_with("updateSection") || function.starts_with("updateZone");
    const bool isReadFirst = breakage.starts_with("drop") &&
                             (isStored || function.starts_with("delete") || function.starts_with("removeAffect"));
    EXPECT_EQ(answer, operation.isRead() || (isReadFirst && breakage != "drop Users") ? "7" : "9");
    if (answer == "9") {
        EXPECT_EQ(content(), before);
    }
    return log.take();
}

/// The lines of a failure, of which the driver's text is taken from themselves.
Lines expectedLines(const Lines &lines, const std::string &message)
{
    const bool isBatch = message.starts_with("add ") && message.find(" or ") == std::string::npos;
    const std::string text = lines.size() < 2 ? "" : lines[1];
    return {isBatch ? "execute batch error" : "execute error", text, message, text};
}

} // namespace

TEST(Failures, everyFailingStepWritesItsFourLinesAndLeavesNothing)
{
    std::ifstream file(TARNEL_DATA "/failures.txt");
    std::set<std::string> failing{"getContractors"}; // It has a test of its own.
    const std::regex pattern("(.*) \\| (.*) \\| (.*)");
    std::smatch row;
    for (std::string line; std::getline(file, line);) {
        if (line[0] == '#')
            continue;
        ASSERT_TRUE(std::regex_match(line, row, pattern)) << line;
        std::istringstream functions(row[1]);
        for (std::string function; functions >> function;) {
            SCOPED_TRACE(function + " | " + row[2].str());
            failing.insert(function);
            const Lines lines = linesOf(function, row[2]);
            EXPECT_EQ(lines, expectedLines(lines, row[3]));
        }
    }
    for (const Export &function : exports())
        EXPECT_EQ(failing.count(function.name), function.needsCache() ? 1U : 0U) << function.name;
}

TEST(Failures, linesCarryTheTextOfTheDriver)
{
    for (const std::string breakage : {"drop Users", "insert Users"}) {
        for (const bool isKept : {false, true}) {
            const TemporaryDirectory directory;
            const RunningCache cache;
            const std::string function = breakage == "drop Users" ? "getUsers" : "addUsers";
            const std::vector<Argument> inputs =
                function == "addUsers" ? std::vector<Argument>{items(R"({"id":1})")} : std::vector<Argument>{};
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "driver");
            database.setDatabaseName("CacheDb");
            database.open();
            {
                QSqlQuery("SELECT 1 FROM sqlite_master", database); // It knows the tables, as the library does.
                QSqlQuery query(database);
                const char *statement =
                    function == "addUsers" ? "INSERT INTO Users (UsersId)VALUES (1)" : "SELECT UsersId FROM Users";
                if (isKept) {
                    query.prepare(statement);
                    call(function, inputs);
                    ask("DELETE FROM Users");
                }
                breakTable(breakage);
                if (isKept || query.prepare(statement))
                    query.exec();
                Log log;
                call(function, inputs);
                EXPECT_EQ(log.take().at(1), query.lastError().text().toStdString());
            }
            database = QSqlDatabase();
            QSqlDatabase::removeDatabase("driver");
        }
    }
}

TEST(Failures, batchThatFailsInTheMiddleIsUndone)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    ask("CREATE TRIGGER refusal BEFORE INSERT ON Users WHEN NEW.UsersId = 3 BEGIN SELECT RAISE(ABORT, 'no'); END");
    EXPECT_EQ(call("addUsers", {items(R"({"id":2},{"id":3})")}), "9");
    EXPECT_EQ(call("getUsers"), "8");
}

TEST(Failures, updateUserLogsTheMessageOfTheAdd)
{
    EXPECT_EQ(linesOf("updateUser", "insert Users").at(2), "add user error");
}

TEST(Failures, linkStepLogsTheMessageOfDeviceUsers)
{
    for (const char *function : {"addDevice", "addDevices", "addSites"})
        EXPECT_EQ(linesOf(function, "insert DeviceUserSectionLinks").at(2), "add device users error");
}

TEST(Failures, getContractorsLogsTheMessageOfTheFilter)
{
    EXPECT_EQ(linesOf("getContractors", "drop Contractors").at(2), "get contractors by field error");
}

TEST(Failures, addEventsWithoutItsIndexStoresNothing)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    ask("CREATE TABLE EventsTimeIndex (Id)");
    Log log;
    EXPECT_EQ(call("addEvent", {item(R"({"id":1})")}), "9");
    EXPECT_EQ(log.take().at(2), "Create Events Time Index error");
    EXPECT_EQ(ask("SELECT * FROM Events"), "");
}

namespace {

/// The table of which the creation, or the writing, is not allowed on connections that are opened now.
std::string forbiddenTable;
int forbiddenAction = 0;

int prohibit(sqlite3 *connection, char **, const void *)
{
    const auto decide = [](void *, int action, const char *name, const char *, const char *, const char *) {
        return action == forbiddenAction && name == forbiddenTable ? SQLITE_DENY : SQLITE_OK;
    };
    return sqlite3_set_authorizer(connection, decide, nullptr);
}

/// The lines of a launch that is not allowed to do something, but for the text of the driver.
Lines linesOfRefusedLaunch(int action, const std::string &table)
{
    const TemporaryDirectory directory;
    forbiddenAction = action;
    forbiddenTable = table;
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&prohibit));
    Log log;
    {
        const RunningCache cache;
        EXPECT_EQ(getLaunchCacheResult(), 6U);
    }
    sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&prohibit));
    return log.take();
}

} // namespace

TEST(Failures, everyTableThatCannotBeCreatedHasItsMessage)
{
    const std::string text = "not authorized Unable to execute statement";
    for (const auto &[table, name] :
         std::vector<std::pair<std::string, std::string>>{{"Users", "users"},
                                                          {"Domains", "domains"},
                                                          {"Organizations", "orgs"},
                                                          {"Locales", "locales"},
                                                          {"Persons", "persons"},
                                                          {"Contractors", "contractors"},
                                                          {"Contracts", "contracts"},
                                                          {"Zones", "zones"},
                                                          {"Sections", "sections"},
                                                          {"Devices", "devices"},
                                                          {"Locations", "locations"},
                                                          {"Sites", "sites"},
                                                          {"Events", "events"},
                                                          {"DeviceUsers", "device users"},
                                                          {"Session", "session"},
                                                          {"Version", "version"},
                                                          {"DeviceUserSectionLinks", "DeviceUserSectionLinks"}})
        EXPECT_EQ(linesOfRefusedLaunch(SQLITE_CREATE_TABLE, table),
                  (Lines{"execute error", text, "create table " + name + " error", text}));
}

TEST(Failures, setVersionMessageKeepsItsSlip)
{
    EXPECT_EQ(linesOfRefusedLaunch(SQLITE_INSERT, "Version").at(2), "set verson error");
}

} // namespace client
