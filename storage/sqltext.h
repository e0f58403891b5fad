#pragma once

#include "storage/tablemodel.h"

#include <vector>

/// The texts of the SQL statements, composed from names.
namespace tarnelLib::controller::sql {

/// Columns of one table: all of them in the table's order, where the statement is about the table.
using Columns = std::span<const ModelField>;

/// Whether a row without a partner in the joined table is read.
enum class JoinKind { Left, Inner };

/// A table that a select joins, with the condition.
struct Join {
    std::string table;
    std::string condition;
    JoinKind kind = JoinKind::Left;
};

/// What a select reads: columns of a table and of those joined to it.
struct Selection {
    std::string_view table;
    std::vector<std::string> columns = {};
    std::vector<Join> joins = {};
};

std::string createTable(Columns table);

/// `rows` rows with one placeholder per column, in the table's order. A stored row of the same key is replaced whole;
/// it is left as it is where the key is all that a row has.
std::string insertOrReplace(Columns table, std::size_t rows);

/// One placeholder per column, in the table's order, and a last one for a bit mask: a stored row of the same key keeps
/// the columns whose bit (counted from the first column) is not set.
std::string upsert(Columns table);

/// A join of the row whose first columns equal these.
Join joinOf(Columns table, const std::vector<std::string> &columns, JoinKind kind = JoinKind::Left);

std::string select(const Selection &selection);

/// Joins a table to a select, by its first column; gives the suffix that the table's columns have there: one that is
/// joined a second time has names of its own.
std::string join(Selection &selection, Columns table, const std::string &column, Zero zero);

std::string deleteFrom(std::string_view table);

/// The condition that each of the columns equals a placeholder, to be appended to a statement that has none.
std::string where(Columns columns);

/// The condition that a column equals one of the numbers in a placeholder's list (`Statement::bindList`).
std::string whereIsListed(std::string_view column);

} // namespace tarnelLib::controller::sql
