#pragma once

#include "controller/result.h"
#include "controller/storage/database.h"

#include <QObject>

#include <atomic>
#include <memory>

namespace tarnelLib::controller
{

/// The single object behind every exported function: owns the storage, remembers the state of the cache and the
/// outcome of its launch, and turns the outcome of each storage operation into a `Result`.
class Controller : public QObject
{
    Q_OBJECT

public:
    Controller();
    Controller(const Controller &) = delete;
    Controller &operator=(const Controller &) = delete;
    ~Controller() override;

    /// Opens the database, making or repairing it once if it must; false if there is none to work with.
    bool connectToDatabase(const QString &path);

    [[nodiscard]] unsigned int getState() const { return m_state; }
    [[nodiscard]] Result getConnectToDatabaseResult() const { return m_connectResult; }
    [[nodiscard]] Database &database() { return *m_database; }

    template <class Record>
    [[nodiscard]] Result add(const std::vector<Record> &records)
    {
        return writeItem([&] { return m_database->add(records); });
    }

    template <class Record>
    [[nodiscard]] Result get(std::vector<Record> &records)
    {
        return listResult(m_database->get(records), records);
    }

    template <class Record>
    [[nodiscard]] Result get(std::vector<Record> &records, std::u16string_view key, std::u16string_view value)
    {
        const ModelField *field = toTableField<Record>(key);
        if (field == nullptr)
            return Result::InvalidArgument;
        return listResult(m_database->get(records, *field, value), records);
    }

    template <class Record>
    [[nodiscard]] Result get(std::optional<Record> &record, quint32 id)
    {
        if (!m_database->get(record, id))
            return Result::ReadFailed;
        return record ? Result::Success : Result::NotFound;
    }

    /// Hands the record back as it is stored afterwards.
    template <class Record>
    [[nodiscard]] Result update(std::optional<Record> &record)
    {
        if (!m_database->update(record))
            return Result::WriteFailed;
        return record ? Result::Success : Result::NotFound;
    }

    /// Deletes a record, if it is stored.
    template <class Record>
    [[nodiscard]] Result deleteItem(quint32 id)
    {
        std::optional<Record> record;
        if (const Result found = get(record, id); found != Result::Success)
            return found;
        return writeItem([&] { return removeItem<Record>(id); });
    }

    Q_SLOT void onStart();

private:
    /// Runs one write of the storage, once.
    template <class Write>
    static Result writeItem(Write &&write)
    {
        return write() ? Result::Success : Result::WriteFailed;
    }

    /// The storage's delete of the kind; specialised for each kind that has one.
    template <class Record>
    bool removeItem(quint32 id);

    template <class Record>
    static Result listResult(bool isRead, const std::vector<Record> &records)
    {
        if (!isRead)
            return Result::ReadFailed;
        return records.empty() ? Result::NotFound : Result::Success;
    }

    std::atomic<unsigned int> m_state = TARNEL_STATE_CONNECTED;
    std::atomic<Result> m_connectResult = Result::NotAvailable;
    std::unique_ptr<Database> m_database;
};

template <>
bool Controller::removeItem<Domain>(quint32 id);
template <>
bool Controller::removeItem<User>(quint32 id);

} // namespace tarnelLib::controller
