#include "storage/database.h"
#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/progress.h"
#include "tools/tarnel/requests.h"

namespace tool {

namespace {

constexpr std::size_t recordsOfLine = 500;

/// Writes calls, each in a line.
class Export
{
public:
    explicit Export(CacheFile &cache) : m_connection(cache.connection()), m_writer(cache.connection())
    {
        forEachKind([&]<class Record>(const lib::KindTable<Record> &) { m_all += count<Record>(); });
    }

    void writeServer()
    {
        std::optional<lib::Text> address;
        if (lib::Database::getServerIp(m_connection, address) && address)
            output::print("{{\"call\":\"setServerIp\",\"text\":{}}}\n", Json(tarnel::utf8(address->view())).dump());
    }

    /// The records of a kind, with all that belongs to them.
    template <class Record>
    void writeRecords()
    {
        std::string items;
        std::size_t size = 0;
        const auto send = [&] {
            if (size > 0)
                output::print("{{\"call\":\"add{}\",\"request\":{{\"D\":{{\"items\":[{}]}}}}}}\n",
                              lib::Schema<Record>::table, items);
            items.clear();
            size = 0;
        };
        for (Query rows(m_connection, selectRows<Record>() + " ORDER BY rowid"); rows.next();) {
            items += (size++ > 0 ? "," : "") + m_writer.object<Record>(rows.row());
            m_progress.show("exporting", ++m_done, m_all);
            if (size == recordsOfLine)
                send();
        }
        send();
    }

    /// Parts of which the device or the section is not stored: an update stores them all the same.
    template <class Part, class Owner>
    void writeLostParts()
    {
        for (Query rows(m_connection, selectRows<Part>() + missing<Part, Owner>()); rows.next();)
            output::print("{{\"call\":\"update{}\",\"request\":{{\"D\":{}}}}}\n", kindName<Part>,
                          m_writer.object<Part>(rows.row(), RequestWriter::Parents::Named));
    }

    /// Contacts that no organization has, and the lack of one that an organization names: a made-up organization brings
    /// the one, and takes the other with it when it is deleted.
    void writeContacts()
    {
        const std::string contact = lib::columnOf(&lib::Organization::contact);
        const std::string person = lib::columnOf(&lib::Person::id);
        const auto organizations = lib::Schema<lib::Organization>::table;
        const auto persons = lib::Schema<lib::Person>::table;
        for (Query rows(m_connection, fmt::format("SELECT DISTINCT {0} FROM {1} WHERE {0} NOT IN (SELECT {2} FROM {3})",
                                                  contact, organizations, person, persons));
             rows.next();) {
            writeMadeUp(fmt::format(R"(,"contact":{{"id":{}}})", rows.number(0)));
            deleteMadeUp();
        }
        bool isAny = false;
        for (Query rows(m_connection, selectRows<lib::Person>() +
                                          fmt::format(" WHERE {0} NOT IN (SELECT {1} FROM {2} WHERE {1} IS NOT NULL)",
                                                      person, contact, organizations));
             rows.next(); isAny = true)
            writeMadeUp(fmt::format(R"(,"contact":{})", m_writer.object<lib::Person>(rows.row())));
        if (isAny) {
            writeMadeUp("");
            deleteMadeUp();
        }
    }

    /// Rows that no call of a client stores.
    template <class Part, class Owner>
    void warnOfLost()
    {
        const std::int64_t lost = number(m_connection, fmt::format("SELECT count(*) FROM {}{}",
                                                                   lib::Schema<Part>::table, missing<Part, Owner>()))
                                      .value_or(0);
        if (lost > 0)
            fmt::print(stderr, "tarnel: {} rows of {} belong to nothing that is stored, and are left out\n", lost,
                       lib::Schema<Part>::table);
    }

private:
    template <class Record>
    std::uint64_t count()
    {
        if constexpr (requires { tarnel::Functions<lib::ApiOf<Record>>::add; })
            return static_cast<std::uint64_t>(
                number(m_connection, fmt::format("SELECT count(*) FROM {}", lib::Schema<Record>::table)).value_or(0));
        else
            return 0;
    }

    template <class Part, class Owner>
    static std::string missing()
    {
        std::vector<std::string> columns;
        for (const lib::ModelField &field : lib::firstColumns<Part>(lib::parentCount<Owner> + 1))
            columns.push_back(field.column());
        const lib::sql::Join owner = lib::sql::joinOf(lib::modelFields<Owner>, columns);
        return fmt::format(" WHERE NOT EXISTS (SELECT 1 FROM {} WHERE {})", owner.table, owner.condition);
    }

    std::int64_t madeUp()
    {
        const std::string id = lib::columnOf(&lib::Organization::id);
        const auto table = lib::Schema<lib::Organization>::table;
        // The first number behind another, or 1, that is free.
        return number(m_connection, fmt::format("SELECT min(n) FROM (SELECT 1 AS n UNION ALL SELECT {0} + 1 FROM {1}) "
                                                "WHERE n NOT IN (SELECT {0} FROM {1})",
                                                id, table))
            .value_or(1);
    }

    void writeMadeUp(const std::string &members)
    {
        output::print("{{\"call\":\"add{}\",\"request\":{{\"D\":{{\"items\":[{{\"org_id\":{}{}}}]}}}}}}\n",
                      lib::Schema<lib::Organization>::table, madeUp(), members);
    }

    void deleteMadeUp()
    {
        output::print("{{\"call\":\"delete{}\",\"request\":{{\"D\":{{\"org_id\":{}}}}}}}\n",
                      kindName<lib::Organization>, madeUp());
    }

    lib::Connection &m_connection;
    RequestWriter m_writer;
    Progress m_progress;
    std::uint64_t m_all = 0;
    std::uint64_t m_done = 0;
};

void runExport(Shared &shared)
{
    CacheFile cache(shared.file);
    cache.requireSound();
    Export calls(cache);
    calls.writeServer();
    forEachKind([&]<class Record>(const lib::KindTable<Record> &) {
        if constexpr (requires { tarnel::Functions<lib::ApiOf<Record>>::add; })
            calls.writeRecords<Record>();
    });
    calls.writeContacts();
    calls.writeLostParts<lib::Section, lib::Device>();
    calls.writeLostParts<lib::Zone, lib::Section>();
    calls.warnOfLost<lib::DeviceUser, lib::Device>();
    calls.warnOfLost<lib::DeviceUserSectionLink, lib::DeviceUser>();
    calls.warnOfLost<lib::Location, lib::Site>();
    cache.assertUnchanged();
}

} // namespace

void addExport(CLI::App &app, Shared &shared)
{
    CLI::App *const command =
        app.add_subcommand("export", "The calls that store all of it, as JSON lines for `import` and other programs");
    addFile(*command, shared);
    command->callback([&shared] { runExport(shared); });
}

} // namespace tool
