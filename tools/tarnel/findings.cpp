#include "tools/tarnel/findings.h"

#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/launchverdict.h"
#include "tools/tarnel/query.h"
#include "tools/tarnel/records.h"
#include "tools/tarnel/valuecheck.h"

#include <algorithm>

namespace tool {

namespace {

constexpr std::size_t mostExamples = 5;
/// Local times are within this of the times that they belong to, in seconds: UTC-12 to UTC+14, and an hour of summer.
constexpr int farthestTimeZone = 15 * 3600;

template <class Part, class Owner>
constexpr bool isPartOf = false;
template <class Part, class Owner>
requires(std::is_class_v<Part>) constexpr bool isPartOf<Part, Owner> =
    lib::parentCount<Part> == lib::parentCount<Owner> + 1;

/// Collects findings about the rows of a file.
class Check
{
public:
    Check(CacheFile &cache, const std::function<void(std::string_view)> &onStep) : m_cache(cache), m_onStep(onStep) {}

    void checkFile()
    {
        m_onStep("integrity");
        for (Query rows(connection(), "PRAGMA integrity_check(20)"); rows.next();) {
            if (rows.bytes(0) != "ok")
                add({Severity::Broken, "file", fmt::format("SQLite finds: {}", rows.bytes(0))});
        }
        const Place &place = m_cache.place();
        if (!place.isInUse && !place.isComplete())
            add({Severity::Note, "file",
                 "a killed client has left a log or a journal beside it; the next launch takes it in"});
        const std::string index = lib::columnOf(&lib::Event::time) + "Index";
        const std::string sql = fmt::format("SELECT count(*) FROM sqlite_master WHERE name = '{}'", index);
        if (number(connection(), sql) == 0 && count(lib::Schema<lib::Event>::table) > 0)
            add({Severity::Suspicious, "file", fmt::format("the index {} is missing: events are read slowly", index)});
    }

    /// The values of all columns, in one pass over each table.
    void checkValues()
    {
        forEachKind([&]<class Record>(const lib::KindTable<Record> &) {
            m_onStep(lib::Schema<Record>::table);
            for (ValueFinding &found : checkValuesOf<Record>(connection(), mostExamples))
                add({Severity::Suspicious, std::move(found.column), std::move(found.what), found.count,
                     std::move(found.examples)});
        });
    }

    /// Rows that name others which are not stored.
    void checkReferences()
    {
        m_onStep("references");
        forEachKind([&]<class Record>(const lib::KindTable<Record> &) { checkReferencesOf<Record>(); });
        using Link = lib::DeviceUserSectionLink;
        checkOwner<Link, lib::DeviceUser>();
        const std::string device = lib::modelFields<Link>.at(0).column();
        const std::string section = lib::modelFields<Link>.at(2).column();
        addMissing<Link>(Severity::Note, lib::sql::joinOf(lib::modelFields<lib::Section>, {device, section}), {},
                         "device users may operate a section that is not stored");
    }

    void checkEvents()
    {
        m_onStep("events");
        using lib::columnOf;
        using lib::Event;
        const std::string device = columnOf(&Event::deviceId);
        const std::string section = columnOf(&Event::sectionId);
        const std::string zone = columnOf(&Event::zoneId);
        const auto known = lib::sql::joinOf(lib::modelFields<lib::Device>, {device});
        addMissing<Event>(Severity::Suspicious, known, {},
                          "their device is not stored: no list shows them, only a read of one by its identifier");
        const std::string isKnown =
            fmt::format(" AND EXISTS (SELECT 1 FROM {} WHERE {})", known.table, known.condition);
        addMissing<Event>(Severity::Suspicious, lib::sql::joinOf(lib::modelFields<lib::Section>, {device, section}),
                          fmt::format("{} IS NOT NULL{}", section, isKnown),
                          "their section is not stored: they are shown without its name");
        addMissing<Event>(Severity::Suspicious, lib::sql::joinOf(lib::modelFields<lib::Zone>, {device, section, zone}),
                          fmt::format("{} IS NOT NULL{}", zone, isKnown),
                          "their zone is not stored in the section that they name: they are shown without its name");
        const std::string user = columnOf(&Event::userId);
        addMissing<Event>(Severity::Suspicious, lib::sql::joinOf(lib::modelFields<lib::User>, {user}),
                          user + " IS NOT NULL", "their operator is not stored: they are shown without a domain");
        const std::string time = columnOf(&Event::time);
        const std::string affect = columnOf(&Event::affect);
        addWhere<Event>(Severity::Suspicious, time + " IS NULL",
                        "they have no time: no list by time shows them, and pruning never takes them");
        addWhere<Event>(Severity::Suspicious, affect + " IS NULL",
                        "they do not say whether they carry the affect flag: pruning never takes them");
        addWhere<Event>(Severity::Note, affect + " <> 0", "they carry the affect flag: pruning leaves them");
        addWhere<Event>(Severity::Suspicious,
                        fmt::format("abs({} - {}) > {}", time, columnOf(&Event::localTime), farthestTimeZone),
                        "their time and local time are further apart than time zones are: one of them may have been "
                        "cut to 32 bits, as milliseconds are");
    }

    std::vector<Finding> take()
    {
        std::ranges::stable_sort(m_findings, std::ranges::greater(), &Finding::severity);
        return std::move(m_findings);
    }

private:
    lib::Connection &connection() { return m_cache.connection(); }

    void add(Finding &&finding) { m_findings.push_back(std::move(finding)); }

    std::int64_t count(std::string_view table)
    {
        return number(connection(), fmt::format("SELECT count(*) FROM {}", table)).value_or(0);
    }

    /// What is said of the rows that a condition selects, if there are any.
    template <class Record>
    void addWhere(Severity severity, const std::string &condition, const std::string &what)
    {
        const std::string_view table = lib::Schema<Record>::table;
        Finding finding{severity, std::string(table), what};
        finding.count = static_cast<std::uint64_t>(
            number(connection(), fmt::format("SELECT count(*) FROM {} WHERE {}", table, condition)).value_or(0));
        if (finding.count == 0)
            return;
        std::string columns;
        for (const lib::ModelField &field : lib::modelFields<Record>) {
            if (field.isPrimaryKey)
                columns += fmt::format("{}{}", columns.empty() ? "" : " || ' ' || ", field.column());
        }
        for (Query rows(connection(),
                        fmt::format("SELECT {} FROM {} WHERE {} LIMIT {}", columns, table, condition, mostExamples));
             rows.next();)
            finding.examples.emplace_back(rows.bytes(0));
        add(std::move(finding));
    }

    /// The same for rows without a partner in another table.
    template <class Record>
    void addMissing(Severity severity, const lib::sql::Join &partner, const std::string &condition,
                    const std::string &what)
    {
        addWhere<Record>(severity,
                         fmt::format("{}NOT EXISTS (SELECT 1 FROM {} WHERE {})",
                                     condition.empty() ? "" : condition + " AND ", partner.table, partner.condition),
                         what);
    }

    /// Parts whose owner is not stored: they are read with it alone.
    template <class Part, class Owner>
    void checkOwner()
    {
        std::vector<std::string> columns;
        for (const lib::ModelField &field : lib::firstColumns<Part>(lib::parentCount<Owner> + 1))
            columns.push_back(field.column());
        addMissing<Part>(
            Severity::Suspicious, lib::sql::joinOf(lib::modelFields<Owner>, columns), {},
            fmt::format("the {} that they belong to is not stored: nobody is shown them", lowered(kindName<Owner>)));
    }

    template <class Record>
    void checkReferencesOf()
    {
        lib::forEachField<Record>([&]<class Row>(const Row &row) {
            if constexpr (lib::is<Row, lib::Reference> || lib::is<Row, lib::Joined>) {
                using Other = typename Row::Nested;
                std::string column;
                if constexpr (lib::is<Row, lib::Reference>)
                    column = lib::columnOf(row.member);
                else
                    column = lib::columnOf(row.identifier);
                const std::string other = lowered(kindName<Other>);
                const bool isNumberShown =
                    lib::is<Row, lib::Reference> && row.uncached == lib::Uncached::IdentifierAlone;
                const bool isZeroNone = row.zero == lib::Zero::IsNone;
                addMissing<Record>(
                    Severity::Suspicious, lib::sql::joinOf(lib::modelFields<Other>, {column}),
                    fmt::format("{} IS NOT NULL{}", column, isZeroNone ? " AND " + column + " <> 0" : ""),
                    fmt::format("the {} that they name is not stored: they are shown {}", other,
                                isNumberShown ? "with its identifier alone" : "without it"));
                addWhere<Record>(Severity::Note,
                                 fmt::format("{} IS NULL{}", column, isZeroNone ? " OR " + column + " = 0" : ""),
                                 fmt::format("they name no {}", other));
            } else if constexpr (lib::is<Row, lib::Attached>) {
                using Other = typename Row::Nested;
                addMissing<Other>(Severity::Suspicious,
                                  lib::sql::joinOf(lib::modelFields<Record>, {lib::columnOf(&Other::id)}), {},
                                  fmt::format("the {} that they belong to is not stored", lowered(kindName<Record>)));
            } else if constexpr (lib::is<Row, lib::Children>) {
                // Parts begin with what names their owner; the devices of a site do not.
                if constexpr (isPartOf<typename Row::Nested, Record>)
                    checkOwner<typename Row::Nested, Record>();
            }
        });
    }

    CacheFile &m_cache;
    const std::function<void(std::string_view)> &m_onStep;
    std::vector<Finding> m_findings;
};

} // namespace

std::string_view nameOf(Severity severity)
{
    switch (severity) {
    case Severity::Note:
        return "note";
    case Severity::Suspicious:
        return "suspicious";
    case Severity::Broken:
        break;
    }
    return "broken";
}

Json toJson(const Finding &finding)
{
    return {{"severity", nameOf(finding.severity)},
            {"subject", finding.subject},
            {"count", finding.count},
            {"what", finding.what},
            {"examples", finding.examples}};
}

std::vector<Finding> check(CacheFile &cache, const std::function<void(std::string_view)> &onStep)
{
    const LaunchVerdict verdict = launchVerdict(cache);
    if (verdict.code != TARNEL_SUCCESS) {
        std::vector<Finding> findings{
            {Severity::Broken, "file", fmt::format("a launch does not keep it as it is: {}", verdict.reason)}};
        return findings;
    }
    Check check(cache, onStep);
    check.checkFile();
    check.checkReferences();
    check.checkEvents();
    check.checkValues();
    return check.take();
}

Severity worstOf(const std::vector<Finding> &findings)
{
    return findings.empty() ? Severity::Note : std::ranges::max(findings, {}, &Finding::severity).severity;
}

} // namespace tool
