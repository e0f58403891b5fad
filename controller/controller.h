#pragma once

#include "controller/result.h"
#include "diagnostics/reason.h"
#include "storage/database.h"
#include "storage/sqlitedatabase.h"
#include "storage/table.h"

#include <atomic>

namespace tarnelLib::controller {

/// The single object behind every exported function: owns the storage, remembers the state of the cache and the outcome
/// of its launch, and turns the outcome of each storage operation into a `Result`.
///
/// Calls of several threads work side by side. One that may write has the connection that writes for all that it does;
/// one that only reads has one of those that read.
class Controller
{
public:
    /// `SQLiteDatabase` says when it calls them.
    Controller(std::function<void()> onLogGrew, std::function<void()> onStateHeld)
        : m_database(std::move(onLogGrew), std::move(onStateHeld))
    {
    }

    /// Opens the database, making or repairing it once if it must.
    void connectToDatabase(const QString &path);

    void onStart() { m_state = TARNEL_STATE_RUNNING; }
    [[nodiscard]] unsigned int getState() const { return m_state; }
    [[nodiscard]] Result getConnectToDatabaseResult() const { return m_connectResult; }
    /// Why no database could be opened or made.
    [[nodiscard]] std::string_view connectFailure() const { return m_connectFailure.view(); }

    /// Brings what was written into the main file; false if a read in progress keeps it off.
    [[nodiscard]] bool foldLog() { return m_database.write()->foldLog(); }
    /// Lets other processes empty the log, which frequent reads keep them from.
    void letGoOfState() noexcept { m_database.letGoOfState(); }
    /// Lets the calls in progress end. Those that wait for a connection, or ask for one from now on, throw.
    void close() noexcept { m_database.close(); }

    /// Carries out a change of the storage that hands nothing back.
    template <class Change, class... Arguments>
    [[nodiscard]] Result write(Change &&change, const Arguments &...arguments)
    {
        return writeResult(change(*m_database.write(), arguments...));
    }

    template <class Record>
    [[nodiscard]] Result add(const std::vector<Record> &records)
    {
        return writeResult(Table<Record>::add(*m_database.write(), records));
    }

    /// Hands back the events that can be read back.
    [[nodiscard]] Result add(std::vector<Event> &&events, Structures<Event> &stored)
    {
        return foundResult(Table<Event>::add(*m_database.write(), std::move(events), stored), stored,
                           Result::WriteFailed);
    }

    /// Hands the record back as it is stored then.
    template <class Record>
    [[nodiscard]] Result add(const Record &record, Structures<Record> &stored)
    {
        return foundResult(Table<Record>::add(*m_database.write(), record, stored), stored, Result::WriteFailed);
    }

    /// All records of the kind; those of the parents, or in a range, where the kind is listed so.
    template <class Record>
    [[nodiscard]] Result get(Structures<Record> &found, Numbers numbers)
    {
        return foundResult(Table<Record>::get(*m_database.read(), found, numbers), found, Result::ReadFailed);
    }

    /// The records of which the field with the JSON key equals the value.
    template <class Record>
    [[nodiscard]] Result getByField(Structures<Record> &found, std::u16string_view key, std::u16string_view value,
                                    Numbers parents)
    {
        const ModelField *field = toTableField<Record>(key);
        if (field == nullptr) {
            noteUnknownField(Schema<Record>::table, key);
            return Result::InvalidArgument;
        }
        return foundResult(Table<Record>::getByField(*m_database.read(), found, *field, value, parents), found,
                           Result::ReadFailed);
    }

    template <class Record>
    [[nodiscard]] Result getOne(Structures<Record> &found, const Identifiers<Record> &identifiers)
    {
        return foundResult(Table<Record>::getOne(*m_database.read(), found, identifiers), found, Result::ReadFailed);
    }

    /// Hands the record back as it is stored then. Whether its parents are there is looked at when it has been written.
    template <class Record>
    [[nodiscard]] Result update(const Record &record, const ParentIds<Record> &parents, Structures<Record> &stored)
    {
        const auto connection = m_database.write();
        const Result updated =
            foundResult(Table<Record>::update(*connection, record, parents, stored), stored, Result::WriteFailed);
        return updated == Result::Success ? checkParents(*connection, parents) : updated;
    }

    /// Deletes a record, if it is stored.
    template <class Record>
    [[nodiscard]] Result deleteItem(const Identifiers<Record> &identifiers)
    {
        const auto connection = m_database.write();
        Structures<Record> record;
        const Result found =
            foundResult(Table<Record>::getOne(*connection, record, identifiers), record, Result::ReadFailed);
        return found == Result::Success ? writeResult(Table<Record>::remove(*connection, identifiers)) : found;
    }

    [[nodiscard]] Result getSiteFields(SiteFields &fields, quint32 site);
    [[nodiscard]] Result removeAffectFlag(Structures<Event> &event, quint32 id);
    [[nodiscard]] Result getServerIp(std::optional<Text> &address);

private:
    Result connect(const QString &path);
    static void noteUnknownField(std::string_view kind, std::u16string_view key) noexcept;

    static Result writeResult(bool isWritten) { return isWritten ? Result::Success : Result::WriteFailed; }

    template <class Record>
    static Result foundResult(bool isDone, const Structures<Record> &found, Result ifNot)
    {
        if (!isDone)
            return ifNot;
        return found.isEmpty() ? Result::NotFound : Result::Success;
    }

    static Result existsResult(bool isRead, bool isExists, Result ifNot)
    {
        if (!isRead)
            return Result::ReadFailed;
        return isExists ? Result::Success : ifNot;
    }

    /// Of a device; or of a device and a section, of which the section is looked at first.
    static Result checkParents(Connection &connection, Numbers parents);

    std::atomic<unsigned int> m_state = TARNEL_STATE_CONNECTED;
    std::atomic<Result> m_connectResult = Result::NotAvailable;
    diagnostics::Detail m_connectFailure; ///< Written before any other thread knows this object.
    SQLiteDatabase m_database;
};

} // namespace tarnelLib::controller
