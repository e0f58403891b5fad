#pragma once

#include "tools/tarnel/query.h"
#include "tools/tarnel/records.h"
#include "tools/tarnel/rows.h"

#include <limits>
#include <map>

/// Whether values in the file are such as the library stores them.
namespace tool {

/// What is odd about values of a column.
struct ValueFinding {
    std::string column;
    std::string what;
    std::uint64_t count = 0;
    std::vector<std::string> examples = {};
};

/// Whether a text is well-formed UTF-8.
[[nodiscard]] bool isUnicode(std::string_view bytes);

/// What is odd about a text; null if nothing is.
[[nodiscard]] const char *oddityOfText(sqlite3_value *held);
/// The same of a number of a field of a type: `isWhole`, and within its limits.
[[nodiscard]] const char *oddityOfNumber(sqlite3_value *held, double least, double most, bool isWhole);

/// What is odd about a value of a field of this type.
template <class Value>
const char *oddityOf(sqlite3_value *held)
{
    if (sqlite3_value_type(held) == SQLITE_NULL)
        return nullptr;
    if constexpr (std::is_same_v<Value, lib::Text>)
        return oddityOfText(held);
    else if constexpr (std::is_same_v<Value, bool>)
        return oddityOfNumber(held, 0, 1, true);
    else
        return oddityOfNumber(held, static_cast<double>(std::numeric_limits<Value>::lowest()),
                              static_cast<double>(std::numeric_limits<Value>::max()),
                              std::numeric_limits<Value>::is_integer);
}

/// The type of the values of a column.
template <class Row>
struct ValueOf {
    using type = quint32;
};
template <class Record, class Value, class Api, class ApiMember>
struct ValueOf<lib::Column<Record, Value, Api, ApiMember>> {
    using type = Value;
};

/// Looks at every value of a kind.
template <class Record>
std::vector<ValueFinding> checkValuesOf(lib::Connection &connection, std::size_t mostExamples)
{
    std::map<std::pair<int, const char *>, ValueFinding> found;
    Query query(connection, selectRows<Record>());
    const auto note = [&](int position, const char *what) {
        const lib::ModelField &field = lib::modelFields<Record>.at(static_cast<std::size_t>(position));
        ValueFinding &finding = found[{position, what}];
        finding.column = field.column();
        finding.what = what;
        ++finding.count;
        if (finding.examples.size() >= mostExamples)
            return;
        std::string &identifiers = finding.examples.emplace_back();
        for (std::size_t i = 0; i < lib::modelFields<Record>.size(); ++i) {
            if (lib::modelFields<Record>.at(i).isPrimaryKey)
                identifiers += fmt::format("{}{}", identifiers.empty() ? "" : " ", query.bytes(static_cast<int>(i)));
        }
    };
    while (query.next()) {
        int position = 0;
        lib::forEachColumn<Record>([&]<class Row>(const Row &) {
            if (const char *what = oddityOf<typename ValueOf<Row>::type>(query.row().cell(position)))
                note(position, what);
            ++position;
        });
    }
    std::vector<ValueFinding> findings;
    findings.reserve(found.size());
    for (auto &[place, finding] : found)
        findings.push_back(std::move(finding));
    return findings;
}

} // namespace tool
