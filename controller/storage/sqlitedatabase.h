#pragma once

#include "controller/storage/database.h"
#include "controller/storage/querypreparer.h"

#include <QSqlDatabase>

namespace tarnelLib::controller
{

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

    template <class Record>
    bool insertAll(const std::vector<Record> &records, const char *message)
    {
        const Query query = m_preparer.prepareAdd<Record>();
        for (const Record &record : records) {
            QueryPreparer::bindRecord(*query, record);
            if (query->step() != Statement::Step::Done) {
                logFailure("execute batch error", *query);
                logFailure(message, *query);
                return false;
            }
            query->reset();
        }
        return true;
    }

    template <class Record>
    bool readAll(Query &&query, std::vector<Record> &records, const char *message)
    {
        const Query use = std::move(query);
        Statement::Step step = use->step();
        for (; step == Statement::Step::Row; step = use->step())
            RowReader::read(*use, records.emplace_back());
        return isDone(step, *use, message);
    }

    /// Reads the first row, if there is one; the record is absent otherwise.
    template <class Record>
    bool readOne(Query &&query, std::optional<Record> &record, const char *message)
    {
        const Query use = std::move(query);
        record.reset();
        const Statement::Step step = use->step();
        if (step == Statement::Step::Row)
            RowReader::read(*use, record.emplace());
        return step == Statement::Step::Row || isDone(step, *use, message);
    }

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

    template <class Record>
    bool isReadable()
    {
        return run(m_preparer.prepareGet<Record>(0), nullptr);
    }

    bool createTables();
    bool useConnection();
    void closeDatabase();
    bool removeDb();
    void logFailure(const char *message, const Statement &statement);

    QString m_name;
    QSqlDatabase m_database;
    sqlite3 *m_connection = nullptr;
    QueryPreparer m_preparer;
    bool m_isContentUnknown = false; ///< A failure said nothing about the file, which must not be judged by it.
    bool m_isLogUnfolded = false;
};

} // namespace tarnelLib::controller
