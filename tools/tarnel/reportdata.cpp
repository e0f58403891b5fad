#include "tools/tarnel/reportdata.h"

#include "storage/database.h"
#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/findings.h"
#include "tools/tarnel/launchverdict.h"
#include "tools/tarnel/masking.h"
#include "tools/tarnel/query.h"
#include "tools/tarnel/records.h"
#include "tools/tarnel/rows.h"

#include <tarnel/diagnostics.h>

#include <cmath>
#include <ctime>
#include <span>

namespace tool {

namespace {

/// Of any other table.
constexpr std::int64_t mostRows = 100000;
/// Texts are as long as their sender likes; the page shows their beginning.
constexpr std::size_t mostBytes = 4096;
/// JavaScript has no larger whole numbers.
constexpr std::int64_t mostExact = (std::int64_t{1} << 53) - 1;

/// As JSON that cannot end the element around it.
std::string inElement(const Json &value)
{
    const std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string safe;
    safe.reserve(text.size());
    for (const char character : text) {
        if (character == '<')
            safe += "\\u003c";
        else
            safe += character;
    }
    return safe;
}

/// The rows of a query, one after the other.
class RowWriter
{
public:
    explicit RowWriter(std::ostream &out) : m_out(out) {}

    std::uint64_t write(Query &&query, std::span<const Masking> columns)
    {
        std::uint64_t rows = 0;
        for (; query.next(); ++rows) {
            m_out << (rows == 0 ? "[" : ",\n[");
            for (int i = 0; const Masking masking : columns) {
                if (i > 0)
                    m_out << ',';
                if (masking == Masking::Kept || query.isNull(i))
                    writeValue(query, i);
                else
                    writeMasked(query, i, masking);
                ++i;
            }
            m_out << ']';
        }
        return rows;
    }

    /// How many texts were longer than the page shows.
    [[nodiscard]] std::uint64_t shortened() const { return m_shortened; }

private:
    void writeValue(const Query &query, int column)
    {
        sqlite3_value *const value = query.row().cell(column);
        switch (sqlite3_value_type(value)) {
        case SQLITE_NULL:
            m_out << "null";
            break;
        case SQLITE_INTEGER:
            writeInteger(sqlite3_value_int64(value));
            break;
        case SQLITE_FLOAT:
            writeDouble(sqlite3_value_double(value));
            break;
        default:
            writeText(query.bytes(column));
        }
    }

    /// What is there, and is personal.
    void writeMasked(const Query &query, int column, Masking masking)
    {
        if (masking == Masking::Text)
            writeText(maskText(query.bytes(column)));
        else if (masking == Masking::Number)
            writeDouble(maskNumber(sqlite3_value_double(query.row().cell(column))));
        else
            writeDouble(maskCoordinate(query.number(0), column + 1));
    }

    void writeInteger(std::int64_t number)
    {
        if (number > mostExact || number < -mostExact)
            m_out << '"' << number << '"';
        else
            m_out << number;
    }

    void writeDouble(double number)
    {
        if (std::isfinite(number))
            m_out << Json(number).dump();
        else
            m_out << '"' << number << '"';
    }

    void writeText(std::string_view text)
    {
        constexpr auto isWithinCharacter = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0) == 0x80; };
        if (text.size() <= mostBytes) {
            m_out << inElement(text);
            return;
        }
        std::size_t end = mostBytes;
        while (end > mostBytes - 4 && isWithinCharacter(text[end]))
            --end;
        ++m_shortened;
        m_out << inElement(fmt::format("{}…", text.substr(0, end)));
    }

    std::ostream &m_out;
    std::uint64_t m_shortened = 0;
};

/// A table's columns as the page has them, and what becomes of their values.
template <class Record>
struct Columns {
    Json fields = Json::array();
    std::vector<Masking> maskings;

    explicit Columns(bool isRedacted)
    {
        for (const lib::ModelField &field : lib::modelFields<Record>)
            fields.push_back(field.field);
        lib::forEachColumn<Record>(
            [&](const auto &row) { maskings.push_back(isRedacted ? maskingOf<Record>(row) : Masking::Kept); });
    }
};

/// The condition for the times that are asked for; empty for all.
std::string conditionOf(const ReportChoice &choice)
{
    const std::string time = lib::columnOf(&lib::Event::time);
    std::string condition;
    if (choice.from)
        condition += fmt::format(" WHERE {} >= {}", time, *choice.from);
    if (choice.to)
        condition += fmt::format(" {} {} <= {}", condition.empty() ? "WHERE" : "AND", time, *choice.to);
    return condition;
}

class ReportWriter
{
public:
    ReportWriter(std::ostream &out, CacheFile &cache, const ReportChoice &choice,
                 const std::function<void(std::string_view)> &onStep)
        : m_out(out), m_rows(out), m_cache(cache), m_choice(choice), m_onStep(onStep)
    {
    }

    ReportSummary write()
    {
        m_out << "{\"tables\":{";
        forEachKind([&](const auto &table) { writeTable(table); });
        m_out << '}';
        if (m_rows.shortened() > 0)
            m_summary.limits.push_back(fmt::format("{} long texts are shown in their first {} bytes.",
                                                   output::grouped(m_rows.shortened()), mostBytes));
        writeMember("file", m_cache.place().file.filename().string());
        writeMember("made", std::time(nullptr));
        writeMember("version",
                    fmt::format("{}.{}.{}", TARNEL_VERSION_MAJOR, TARNEL_VERSION_MINOR, TARNEL_VERSION_PATCH));
        writeMember("redacted", m_choice.isRedacted);
        writeMember("limits", m_summary.limits);
        writeMember("span", span());
        writeMember("facts", facts());
        writeMember("findings", findings());
        m_out << '}';
        return m_summary;
    }

private:
    template <class Record>
    void writeTable(const lib::KindTable<Record> & /*table*/)
    {
        constexpr bool isEvent = std::is_same_v<Record, lib::Event>;
        constexpr std::string_view table = lib::Schema<Record>::table;
        const Columns<Record> columns(m_choice.isRedacted);
        const std::string condition = isEvent ? conditionOf(m_choice) : std::string();
        const std::uint64_t count = countOf(table, "");
        const std::uint64_t chosen = condition.empty() ? count : countOf(table, condition);
        std::string query = selectRows<Record>() + condition;
        if (isEvent)
            query += fmt::format(" ORDER BY {} DESC,rowid DESC", lib::columnOf(&lib::Event::time));
        query += fmt::format(" LIMIT {}", isEvent ? std::min(m_choice.last, mostEvents) : mostRows);
        if (!m_isFirst)
            m_out << ',';
        m_isFirst = false;
        m_out << fmt::format(R"("{}":{{"fields":{},"count":{},"chosen":{},"rows":[)", table, columns.fields.dump(),
                             count, chosen);
        const std::uint64_t rows = m_rows.write(Query(m_cache.connection(), query), columns.maskings);
        m_out << "]}\n";
        if constexpr (isEvent) {
            m_summary.events = rows;
            noteEvents(count, chosen);
        } else if (rows < count) {
            m_summary.limits.push_back(fmt::format("Of the {} rows of {} the page holds {}.", output::grouped(count),
                                                   table, output::grouped(rows)));
        }
    }

    [[nodiscard]] std::uint64_t countOf(std::string_view table, const std::string &condition)
    {
        const auto rows = number(m_cache.connection(), fmt::format("SELECT count(*) FROM {}{}", table, condition));
        return static_cast<std::uint64_t>(rows.value_or(0));
    }

    void noteEvents(std::uint64_t count, std::uint64_t chosen)
    {
        if (chosen < count)
            m_summary.limits.push_back(fmt::format("Only {} of the {} events are of the times that were asked for.",
                                                   output::grouped(chosen), output::grouped(count)));
        if (m_summary.events < chosen)
            m_summary.limits.push_back(fmt::format("The page holds the newest {} of {} events.",
                                                   output::grouped(m_summary.events), output::grouped(chosen)));
    }

    void writeMember(std::string_view name, const Json &value)
    {
        m_out << fmt::format(",\"{}\":{}\n", name, inElement(value));
    }

    /// The first and the last time of all events.
    [[nodiscard]] Json span()
    {
        const auto end = [&](std::string_view function) {
            return number(m_cache.connection(),
                          fmt::format("SELECT {}({}) FROM {}", function, lib::columnOf(&lib::Event::time),
                                      lib::Schema<lib::Event>::table));
        };
        const auto first = end("min");
        const auto last = end("max");
        return first && last ? Json{*first, *last} : Json();
    }

    [[nodiscard]] Json findings()
    {
        Json found = Json::array();
        for (const Finding &finding : check(m_cache, m_onStep))
            found.push_back(toJson(finding));
        return found;
    }

    [[nodiscard]] Json facts()
    {
        const Place &place = m_cache.place();
        const LaunchVerdict verdict = launchVerdict(m_cache);
        Json found = Json::array();
        const auto add = [&](std::string_view name, const std::string &value) {
            found.push_back(Json::array({name, value}));
        };
        std::optional<lib::Text> text;
        if (lib::Database::getServerIp(m_cache.connection(), text) && text)
            add("Server", m_choice.isRedacted ? maskText(tarnel::utf8(text->view())) : tarnel::utf8(text->view()));
        text.reset();
        if (lib::Database::getVersion(m_cache.connection(), text) && text)
            add("Version of the tables", tarnel::utf8(text->view()));
        add("Size", output::size(place.bytes));
        if (place.logBytes > 0)
            add("Log beside it", output::size(place.logBytes));
        add("Open in a client", place.isInUse ? "yes" : "no");
        add("A launch would give",
            fmt::format("{} {}: {}", verdict.code, tarnelCodeName(verdict.code), verdict.reason));
        return found;
    }

    std::ostream &m_out;
    RowWriter m_rows;
    CacheFile &m_cache;
    const ReportChoice &m_choice;
    const std::function<void(std::string_view)> &m_onStep;
    ReportSummary m_summary;
    bool m_isFirst = true;
};

} // namespace

ReportSummary writeReportData(std::ostream &out, CacheFile &cache, const ReportChoice &choice,
                              const std::function<void(std::string_view)> &onStep)
{
    return ReportWriter(out, cache, choice, onStep).write();
}

} // namespace tool
