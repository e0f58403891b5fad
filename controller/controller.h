#pragma once

#include "controller/result.h"
#include "storage/database.h"

#include <QObject>

#include <atomic>
#include <memory>

namespace tarnelLib::controller {

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

    /// Hands back the events that can be read back.
    [[nodiscard]] Result add(std::vector<Event> &events);

    /// Hands the record back as it is stored afterwards.
    template <class Record>
    [[nodiscard]] Result add(std::optional<Record> &record)
    {
        return changeResult(m_database->add(record), record);
    }

    /// All records of the kind; of those in the parents, or in a range, where the kind is listed so.
    template <class Record, class... Numbers>
    [[nodiscard]] Result get(std::vector<Record> &records, Numbers... numbers)
    {
        return listResult(m_database->get(records, numbers...), records);
    }

    /// The records of which the field with the JSON key equals the value.
    template <class Record, class... Parents>
    [[nodiscard]] Result getByField(std::vector<Record> &records, std::u16string_view key, std::u16string_view value,
                                    Parents... parents)
    {
        const ModelField *field = toTableField<Record>(key);
        if (field == nullptr)
            return Result::InvalidArgument;
        return listResult(m_database->get(records, *field, value, parents...), records);
    }

    /// Identifiers are those of the parents and then the record's own.
    template <class Record, class... Identifiers>
    [[nodiscard]] Result get(std::optional<Record> &record, Identifiers... identifiers)
    {
        if (!m_database->get(record, identifiers...))
            return Result::ReadFailed;
        return record ? Result::Success : Result::NotFound;
    }

    /// Hands the record back as it is stored afterwards.
    template <class Record>
    [[nodiscard]] Result update(std::optional<Record> &record)
    {
        return changeResult(m_database->update(record), record);
    }

    /// Whether the parents are there is looked at when the record has been written.
    [[nodiscard]] Result update(std::optional<Section> &section, quint32 device);
    [[nodiscard]] Result update(std::optional<Zone> &zone, quint32 device, quint32 section);

    /// Deletes a record, if it is stored.
    template <class Record, class... Identifiers>
    [[nodiscard]] Result deleteItem(Identifiers... identifiers)
    {
        std::optional<Record> record;
        if (const Result found = get(record, identifiers...); found != Result::Success)
            return found;
        return writeItem([&] { return removeItem(Kind<Record>(), identifiers...); });
    }

    [[nodiscard]] Result getSiteFields(std::optional<Text> &name, std::optional<Text> &address, quint32 site);
    [[nodiscard]] Result removeAffectFlag(std::optional<Event> &event, quint32 id);
    [[nodiscard]] Result clearEventsBeforeDateExceptAffects(quint32 date);

    [[nodiscard]] Result setServerIp(std::u16string_view address);
    [[nodiscard]] Result getServerIp(std::optional<Text> &address);
    [[nodiscard]] Result clearAll();
    [[nodiscard]] Result clearAllExceptEvents();

    Q_SLOT void onStart();

private:
    /// Runs one write of the storage, once.
    template <class Write>
    static Result writeItem(Write &&write)
    {
        return write() ? Result::Success : Result::WriteFailed;
    }

    template <class Record>
    struct Kind {
    };

    // The storage's delete of each kind.
    bool removeItem(Kind<Domain>, quint32 id) { return m_database->deleteDomain(id); }
    bool removeItem(Kind<User>, quint32 id) { return m_database->deleteUser(id); }
    bool removeItem(Kind<Organization>, quint32 id) { return m_database->deleteOrganization(id); }
    bool removeItem(Kind<Contractor>, quint32 id) { return m_database->deleteContractor(id); }
    bool removeItem(Kind<Contract>, quint32 id) { return m_database->deleteContract(id); }
    bool removeItem(Kind<Device>, quint32 id) { return m_database->deleteDevice(id); }
    bool removeItem(Kind<Section>, quint32 device, quint32 id) { return m_database->deleteSection(device, id); }
    bool removeItem(Kind<Zone>, quint32 device, quint32 section, quint32 id)
    {
        return m_database->deleteZone(device, section, id);
    }
    bool removeItem(Kind<Site>, quint32 id) { return m_database->deleteSite(id); }

    template <class Record>
    static Result changeResult(bool isWritten, const std::optional<Record> &record)
    {
        if (!isWritten)
            return Result::WriteFailed;
        return record ? Result::Success : Result::NotFound;
    }

    static Result existsResult(bool isRead, bool isExists, Result ifNot)
    {
        if (!isRead)
            return Result::ReadFailed;
        return isExists ? Result::Success : ifNot;
    }

    Result checkDevice(quint32 device);

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

} // namespace tarnelLib::controller
