#pragma once

#include "storage/database.h"
#include "storage/querypreparer.h"

#include <QSqlDatabase>

#include <span>

namespace tarnelLib::controller {

/// The storage in one SQLite file, opened through Qt's driver; rows go through the driver's native handle.
class SQLiteDatabase : public Database
{
    Q_OBJECT

public:
    SQLiteDatabase() = default;
    SQLiteDatabase(const SQLiteDatabase &) = delete;
    SQLiteDatabase &operator=(const SQLiteDatabase &) = delete;
    ~SQLiteDatabase() override;

    bool isDatabaseFileExists(const QString &path) override;
    bool restoreDatabase(const QString &path) override;
    bool openDatabase(const QString &path) override;
    bool recreateDatabase(const QString &path) override;
    bool isDbVersionActual() override;
    bool isTablesValid() override;
    void foldLog() override;

    bool add(const std::vector<Locale> &locales) override;
    bool get(std::vector<Locale> &locales) override;
    bool get(std::vector<Locale> &locales, const ModelField &field, std::u16string_view value) override;
    bool get(std::optional<Locale> &locale, quint32 id) override;

    bool add(const std::vector<Domain> &domains) override;
    bool get(std::vector<Domain> &domains) override;
    bool get(std::vector<Domain> &domains, const ModelField &field, std::u16string_view value) override;
    bool get(std::optional<Domain> &domain, quint32 id) override;
    bool update(std::optional<Domain> &domain) override;
    bool deleteDomain(quint32 id) override;

    bool add(const std::vector<User> &users) override;
    bool get(std::vector<User> &users) override;
    bool get(std::vector<User> &users, const ModelField &field, std::u16string_view value) override;
    bool get(std::optional<User> &user, quint32 id) override;
    bool update(std::optional<User> &user) override;
    bool deleteUser(quint32 id) override;

    bool add(const std::vector<Organization> &organizations) override;
    bool get(std::vector<Organization> &organizations) override;
    bool get(std::vector<Organization> &organizations, const ModelField &field, std::u16string_view value) override;
    bool get(std::optional<Organization> &organization, quint32 id) override;
    bool update(std::optional<Organization> &organization) override;
    bool deleteOrganization(quint32 id) override;

    bool add(const std::vector<Contractor> &contractors) override;
    bool get(std::vector<Contractor> &contractors) override;
    bool get(std::vector<Contractor> &contractors, const ModelField &field, std::u16string_view value) override;
    bool get(std::optional<Contractor> &contractor, quint32 id) override;
    bool update(std::optional<Contractor> &contractor) override;
    bool deleteContractor(quint32 id) override;

    bool add(const std::vector<Contract> &contracts) override;
    bool get(std::vector<Contract> &contracts) override;
    bool get(std::vector<Contract> &contracts, const ModelField &field, std::u16string_view value) override;
    bool get(std::optional<Contract> &contract, quint32 id) override;
    bool update(std::optional<Contract> &contract) override;
    bool deleteContract(quint32 id) override;

    bool get(std::vector<Zone> &zones, quint32 device) override;
    bool get(std::vector<Zone> &zones, quint32 device, quint32 section) override;
    bool get(std::vector<Zone> &zones, const ModelField &field, std::u16string_view value, quint32 device) override;
    bool get(std::vector<Zone> &zones, const ModelField &field, std::u16string_view value, quint32 device,
             quint32 section) override;
    bool get(std::optional<Zone> &zone, quint32 device, quint32 section, quint32 id) override;
    bool update(std::optional<Zone> &zone, quint32 device, quint32 section) override;
    bool deleteZone(quint32 device, quint32 section, quint32 id) override;

    bool get(std::vector<Section> &sections, quint32 device) override;
    bool get(std::vector<Section> &sections, const ModelField &field, std::u16string_view value,
             quint32 device) override;
    bool get(std::optional<Section> &section, quint32 device, quint32 id) override;
    bool isSectionExists(bool &isExists, quint32 device, quint32 id) override;
    bool update(std::optional<Section> &section, quint32 device) override;
    bool deleteSection(quint32 device, quint32 id) override;

    bool add(const std::vector<Device> &devices) override;
    bool add(std::optional<Device> &device) override;
    bool get(std::vector<Device> &devices) override;
    bool get(std::vector<Device> &devices, const ModelField &field, std::u16string_view value) override;
    bool get(std::optional<Device> &device, quint32 id) override;
    bool isDeviceExists(bool &isExists, quint32 id) override;
    bool update(std::optional<Device> &device) override;
    bool deleteDevice(quint32 id) override;

    bool add(const std::vector<Site> &sites) override;
    bool get(std::vector<Site> &sites) override;
    bool get(std::vector<Site> &sites, const ModelField &field, std::u16string_view value) override;
    bool get(std::optional<Site> &site, quint32 id) override;
    bool isSiteExists(bool &isExists, quint32 id) override;
    bool getSiteFields(std::optional<Text> &name, std::optional<Text> &address, quint32 id) override;
    bool update(std::optional<Site> &site) override;
    bool deleteSite(quint32 id) override;

    bool add(std::vector<Event> &events) override;
    bool add(std::optional<Event> &event) override;
    bool get(std::vector<Event> &events, quint32 from, quint32 to) override;
    bool get(std::vector<Event> &events) override;
    bool isEventExists(bool &isExists, quint32 id) override;
    bool removeAffectFlag(std::optional<Event> &event, quint32 id) override;
    bool clearEventsBeforeDateExceptAffects(quint32 date) override;

    bool setServerIp(std::u16string_view address) override;
    bool getServerIp(std::optional<Text> &address) override;
    bool clearAll() override;
    bool clearAllExceptEvents() override;

private:
    // The steps that the operations are made of. A step that fails has logged its message and returns false.

    /// Carries out the steps in one transaction: kept if all of them succeed, undone otherwise.
    template <class Steps>
    bool inTransaction(Steps &&steps)
    {
        Transaction transaction(*this);
        return transaction.begin() && steps() && transaction.commit();
    }

    /// Runs a statement that yields no rows.
    bool run(Query &&query, const char *message);

    /// Inserts records, many with one statement: with a statement for each, `addSites` takes 1.5 times as long. After
    /// the first failure the others are passed over.
    template <class Record>
    class Batch
    {
    public:
        Batch(SQLiteDatabase &database, const char *message) : m_database(database), m_message(message)
        {
            // A table that is not there is a failure also where there is nothing to insert.
            const Query query = m_database.m_preparer.prepareAdd<Record>(1);
            if (!query->isPrepared())
                fail(*query);
        }

        /// The record must be there until the batch is finished.
        template <class... Parents>
        void add(const Record &record, Parents... parents)
        {
            m_rows[m_count++] = {&record, {parents...}};
            if (m_count == m_rows.size()) {
                insert(m_rows);
                m_count = 0;
            }
        }

        /// Inserts what is left; false if anything has failed.
        [[nodiscard]] bool finish()
        {
            for (const Row &row : std::span(m_rows).first(std::exchange(m_count, 0)))
                insert({&row, 1});
            return !m_hasFailed;
        }

    private:
        struct Row {
            const Record *record;
            std::array<quint32, parentCount<Record>> parents;
        };

        void insert(std::span<const Row> rows)
        {
            if (m_hasFailed)
                return;
            const Query query = m_database.m_preparer.prepareAdd<Record>(rows.size());
            int position = 1;
            for (const Row &row : rows)
                position = QueryPreparer::bindRecord(*query, position, *row.record, row.parents);
            if (query->step() != Statement::Step::Done)
                fail(*query);
        }

        void fail(const Statement &statement)
        {
            m_hasFailed = true;
            m_database.logFailure("execute batch error", statement);
            m_database.logFailure(m_message, statement);
        }

        SQLiteDatabase &m_database;
        const char *m_message;
        std::array<Row, 16> m_rows;
        std::size_t m_count = 0;
        bool m_hasFailed = false;
    };

    /// Inserts one record, in place of a stored one.
    template <class Record>
    bool replace(const Record &record, const char *message)
    {
        Query query = m_preparer.prepareAdd<Record>(1);
        QueryPreparer::bindRecord(*query, 1, record, {});
        return run(std::move(query), message);
    }

    template <class Record>
    bool insertAll(std::span<const Record> records, const char *message)
    {
        Batch<Record> inserts(*this, message);
        for (const Record &record : records)
            inserts.add(record);
        return inserts.finish();
    }

    /// Calls `visit` with each row.
    template <class Visitor>
    bool readEach(Query &&query, const char *message, Visitor &&visit)
    {
        const Query use = std::move(query);
        Statement::Step step = use->step();
        for (; step == Statement::Step::Row; step = use->step())
            visit(*use);
        return isDone(step, *use, message);
    }

    template <class Record>
    bool readAll(Query &&query, std::vector<Record> &records, const char *message)
    {
        return readEach(std::move(query), message,
                        [&](const Statement &row) { RowReader::read(row, records.emplace_back()); });
    }

    /// Calls `visit` with the first row, if there is one.
    template <class Visitor>
    bool readFirst(Query &&query, const char *message, Visitor &&visit)
    {
        const Query use = std::move(query);
        const Statement::Step step = use->step();
        if (step != Statement::Step::Row)
            return isDone(step, *use, message);
        visit(*use);
        return true;
    }

    /// The record is absent if there is no row.
    template <class Record>
    bool readOne(Query &&query, std::optional<Record> &record, const char *message)
    {
        record.reset();
        return readFirst(std::move(query), message,
                         [&](const Statement &row) { RowReader::read(row, record.emplace()); });
    }

    bool readExists(Query &&query, bool &isExists, const char *message);

    /// Whether a statement ended well; a failure is logged, first as any statement's and then with the message.
    bool isDone(Statement::Step step, const Statement &statement, const char *message);

    /// A transaction that is undone unless it is committed. Beginning and committing can fail like any other step.
    class Transaction
    {
    public:
        explicit Transaction(SQLiteDatabase &database) : m_database(database) {}
        Transaction(const Transaction &) = delete;
        Transaction &operator=(const Transaction &) = delete;
        ~Transaction();
        [[nodiscard]] bool begin();
        [[nodiscard]] bool commit();

    private:
        SQLiteDatabase &m_database;
        bool m_isOpen = false;
    };

    // Statements and steps that one kind alone has.
    Query prepareDeletePersonOfOrganization(quint32 id);
    Query prepareDeleteLinksOfSection(quint32 device, quint32 section);
    Query prepareUpdateDeviceFw(const Device &device);
    Query prepareGetEventById(quint32 id);
    Query prepareInRange(std::size_t statement, quint32 from, quint32 to);
    bool lendNames(std::vector<Event> &events, const char *message);
    bool readBack(std::vector<Event> &events);
    bool doAddDevices(const std::vector<const Device *> &devices);
    bool doGetDevice(std::optional<Device> &device, quint32 id);
    enum class DevicesRead { Some, All };
    bool getExtraDeviceFields(std::span<Device> devices, DevicesRead read);
    bool getZonesOf(std::span<Section> sections, Query &&zones);
    bool doGetSectionForDeviceById(std::optional<Section> &section, quint32 device, quint32 id);
    bool doGetSiteById(std::optional<Site> &site, quint32 id);
    bool getExtraSiteFields(std::span<Site> sites);
    bool doAddEvents(std::span<const Event> events);
    bool createEventsTimeIndex();
    bool getEventById(std::optional<Event> &event, quint32 id);
    bool doClearAllExceptEvents();

    bool createTables();
    bool areTablesReadable();
    bool useConnection();
    void closeDatabase();
    void abandonDatabase(const QString &path);
    bool removeDb();
    void logFailure(const char *message, const Statement &statement);

    QString m_name;
    QSqlDatabase m_database;
    sqlite3 *m_connection = nullptr;
    QueryPreparer m_preparer;
    bool m_isFileNew = false;        ///< This launch has made it.
    bool m_isContentUnknown = false; ///< A failure said nothing about the file, which must not be judged by it.
    bool m_isLogUnfolded = false;
};

} // namespace tarnelLib::controller
