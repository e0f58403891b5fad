#include "storage/querypreparer.h"

namespace tarnelLib::controller {

namespace {

// Both tables hold one row at most, that of identifier 0.
constexpr const char *createSessionTable =
    "CREATE TABLE Session (SessionId INTEGER PRIMARY KEY,SessionIp VARCHAR(255))";
constexpr const char *setIp = "INSERT OR REPLACE INTO Session (SessionId,SessionIp)VALUES (0,?)";
constexpr const char *getIp = "SELECT * FROM Session";
constexpr const char *createVersionTable =
    "CREATE TABLE Version (VersionId INTEGER PRIMARY KEY,VersionNumber VARCHAR(255))";
constexpr const char *setDbVersion = "INSERT OR REPLACE INTO Version (VersionId,VersionNumber)VALUES (0,?)";
constexpr const char *getDbVersion = "SELECT VersionNumber FROM Version WHERE VersionId = 0";

} // namespace

void QueryPreparer::attach(sqlite3 *connection)
{
    m_statements.clear();
    m_connection = connection;
}

Query QueryPreparer::prepareText(const char *sql)
{
    return prepare({Verb::Special, sql}, [sql] { return sql; });
}

Query QueryPreparer::prepareBegin()
{
    return prepareText("BEGIN");
}

Query QueryPreparer::prepareCommit()
{
    return prepareText("COMMIT");
}

Query QueryPreparer::prepareRollback()
{
    return prepareText("ROLLBACK");
}

Query QueryPreparer::prepareCreateSessionTable()
{
    return prepareText(createSessionTable);
}

Query QueryPreparer::prepareCreateVersionTable()
{
    return prepareText(createVersionTable);
}

Query QueryPreparer::prepareSetIp(std::u16string_view address)
{
    Query query = prepareText(setIp);
    query->bind(1, address);
    return query;
}

Query QueryPreparer::prepareGetIp()
{
    return prepareText(getIp);
}

Query QueryPreparer::prepareSetDbVersion(std::u16string_view version)
{
    Query query = prepareText(setDbVersion);
    query->bind(1, version);
    return query;
}

Query QueryPreparer::prepareGetDbVersion()
{
    return prepareText(getDbVersion);
}

} // namespace tarnelLib::controller
