#include "databasefile.h"
#include "kinds.h"
#include "log.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <gtest/gtest.h>

/// What a failing database looks like from outside: codes, log lines, and nothing half-stored.
namespace client {

namespace {

/// An operation that is made to fail behind the library's back.
struct Operation {
    std::string message;
    std::string firstLine;
    std::string code;
    std::function<std::string()> call;
    std::string breakage;  ///< SQL that makes it fail.
    std::string statement; ///< One that then fails for the same reason.
};

std::vector<Operation> operationsOf(const Kind &kind)
{
    const std::string &table = kind.table;
    const Messages &messages = kind.messages;
    const std::string id = table + "Id";
    const std::string drop = "DROP TABLE " + table;
    const std::string select = "SELECT " + id + " FROM " + table;
    const std::string refuse = "CREATE TRIGGER refusal BEFORE ";
    const std::string insert = "INSERT OR REPLACE INTO " + table + " (" + id + ")VALUES (3)";
    const std::string refuseInsert =
        refuse + "INSERT ON " + table + " WHEN NEW." + id + " = 3 BEGIN SELECT RAISE(ABORT, 'отказ'); END";
    const std::string refuseDelete = refuse + "DELETE ON " + table + " BEGIN SELECT RAISE(ABORT, 'no'); END";

    std::vector<Operation> operations{
        {messages.get, "execute error", "7", [&] { return kind.get(1); }, drop, select},
        {messages.getAll, "execute error", "7", kind.getAll, drop, select},
        {messages.getByField, "execute error", "7", [&] { return kind.getWithParams("id", "1"); }, drop, select},
        {messages.add, "execute batch error", "9", [&] { return kind.add(items(R"({"id":2},{"id":3})")); },
         refuseInsert, insert}};
    if (kind.update)
        operations.push_back({messages.update, "execute error", "9", [&] { return kind.update(item(R"({"id":3})")); },
                              refuseInsert, insert});
    if (kind.deleteItem)
        operations.push_back({messages.deleteItem, "execute error", "9",
                              [&] { return kind.deleteItem(kind.deleteRequest(1)); }, refuseDelete,
                              "DELETE FROM " + table + " WHERE " + id + " = 1"});
    return operations;
}

/// Qt's own connection to the file, to know what its driver says.
class Driver
{
public:
    Driver() : m_database(QSqlDatabase::addDatabase("QSQLITE", "driver"))
    {
        m_database.setDatabaseName("CacheDb");
        m_database.open();
        QSqlQuery("SELECT 1 FROM sqlite_master", m_database); // It knows the tables, as the library's connection does.
    }
    Driver(const Driver &) = delete;
    Driver &operator=(const Driver &) = delete;
    ~Driver()
    {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase("driver");
    }

    /// The driver's text about a statement that `breakage` makes fail, if it is prepared before or after that.
    std::string errorText(const std::string &statement, const std::string &breakage, bool isKept)
    {
        QSqlQuery query(m_database);
        if (isKept)
            query.prepare(QString::fromStdString(statement));
        ask(breakage);
        if (isKept || query.prepare(QString::fromStdString(statement)))
            query.exec();
        return query.lastError().text().toStdString();
    }

private:
    QSqlDatabase m_database;
};

} // namespace

TEST(Failures, everyFailingOperationWritesItsFourLinesAndLeavesNothing)
{
    for (const Kind &kind : kinds()) {
        for (const Operation &operation : operationsOf(kind)) {
            for (const bool isKept : {false, true}) {
                SCOPED_TRACE(operation.message + (isKept ? " with a kept statement" : ""));
                const TemporaryDirectory directory;
                const RunningCache cache;
                if (isKept) {
                    ASSERT_EQ(kind.add(items(kind.record)), "0");
                    ASSERT_EQ(operation.call()[0], '0');
                    ask("DELETE FROM " + kind.table);
                }
                ASSERT_EQ(kind.add(items(kind.record)), "0");
                Driver driver;
                const std::string text = driver.errorText(operation.statement, operation.breakage, isKept);
                Log log;
                EXPECT_EQ(operation.call(), operation.code);
                EXPECT_EQ(log.take(), (std::vector<std::string>{operation.firstLine, text, operation.message, text}));
                if (operation.code == "9") {
                    EXPECT_EQ(kind.getAll(), "0 " + kind.read);
                }
            }
        }
    }
}

TEST(Failures, updateUserLogsTheMessageOfTheAdd)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    ask("DROP TABLE Users");
    Log log;
    EXPECT_EQ(kind("Users").update(item(R"({"id":1})")), "9");
    EXPECT_EQ(log.take().at(2), "add user error");
}

TEST(Failures, updateThatCannotBeReadBackIsUndone)
{
    for (const char *table : {"Domains", "Users"}) {
        const TemporaryDirectory directory;
        const RunningCache cache;
        ask("DROP TABLE Locales");
        EXPECT_EQ(kind(table).update(item(R"({"id":1})")), "9");
        EXPECT_EQ(ask(std::string("SELECT count(*) FROM ") + table), "0\n");
    }
}

namespace {

/// The table of which the creation, or the writing, is not allowed on connections that are opened now.
std::string forbiddenTable;
int forbiddenAction = 0;

/// Forbids one action on every new connection while it lives.
class Prohibition
{
public:
    Prohibition(int action, const std::string &table)
    {
        forbiddenAction = action;
        forbiddenTable = table;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(&prohibit));
    }
    Prohibition(const Prohibition &) = delete;
    Prohibition &operator=(const Prohibition &) = delete;
    ~Prohibition() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&prohibit)); }

private:
    static int prohibit(sqlite3 *connection, char **, const void *)
    {
        const auto decide = [](void *, int action, const char *name, const char *, const char *, const char *) {
            return action == forbiddenAction && name == forbiddenTable ? SQLITE_DENY : SQLITE_OK;
        };
        return sqlite3_set_authorizer(connection, decide, nullptr);
    }
};

std::vector<std::string> linesOfRefusedLaunch(int action, const std::string &table)
{
    const TemporaryDirectory directory;
    const Prohibition prohibition(action, table);
    Log log;
    const RunningCache cache;
    EXPECT_EQ(getLaunchCacheResult(), 6U);
    return log.take();
}

std::vector<std::string> refusedStep(const std::string &message)
{
    const std::string text = "not authorized Unable to execute statement";
    return {"execute error", text, message, text};
}

} // namespace

TEST(Failures, everyTableThatCannotBeCreatedHasItsMessage)
{
    for (const auto &[table, message] :
         std::vector<std::pair<std::string, std::string>>{{"Users", "create table users error"},
                                                          {"Domains", "create table domains error"},
                                                          {"Locales", "create table locales error"},
                                                          {"Session", "create table session error"},
                                                          {"Version", "create table version error"}})
        EXPECT_EQ(linesOfRefusedLaunch(SQLITE_CREATE_TABLE, table), refusedStep(message));
}

TEST(Failures, setVersionMessageKeepsItsSlip)
{
    EXPECT_EQ(linesOfRefusedLaunch(SQLITE_INSERT, "Version"), refusedStep("set verson error"));
}

} // namespace client
