#include "controller/storage/querypreparer.h"

namespace tarnelLib::controller
{

void QueryPreparer::attach(sqlite3 *connection)
{
    m_statements.clear();
    m_connection = connection;
}

Query QueryPreparer::prepareCreateSessionTable()
{
    return kept({Verb::CreateSessionTable},
                [] { return "CREATE TABLE Session (SessionId INTEGER PRIMARY KEY,SessionIp VARCHAR(255))"; });
}

Query QueryPreparer::prepareCreateVersionTable()
{
    return kept({Verb::CreateVersionTable},
                [] { return "CREATE TABLE Version (VersionId INTEGER PRIMARY KEY,VersionNumber VARCHAR(255))"; });
}

Query QueryPreparer::prepareSetDbVersion(std::u16string_view version)
{
    Query query = kept({Verb::SetDbVersion},
                       [] { return "INSERT OR REPLACE INTO Version (VersionId,VersionNumber)VALUES (0,?)"; });
    query->bind(1, version);
    return query;
}

Query QueryPreparer::prepareGetDbVersion()
{
    return kept({Verb::GetDbVersion}, [] { return "SELECT VersionNumber FROM Version WHERE VersionId = 0"; });
}

Query QueryPreparer::prepareGetIp()
{
    return kept({Verb::GetIp}, [] { return "SELECT SessionIp FROM Session"; });
}

} // namespace tarnelLib::controller
