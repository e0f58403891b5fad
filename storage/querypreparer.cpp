#include "storage/querypreparer.h"

namespace tarnelLib::controller {

void QueryPreparer::attach(sqlite3 *connection)
{
    m_statements.clear();
    m_connection = connection;
}

Statement &QueryPreparer::kept(const Key &key)
{
    return m_statements[key];
}

std::vector<std::string> QueryPreparer::columnsOf(std::span<const ModelField> fields)
{
    std::vector<std::string> columns;
    for (const ModelField &field : fields)
        columns.push_back(field.column());
    return columns;
}

} // namespace tarnelLib::controller
