#pragma once

#include "entities/event.h"
#include "entities/organization.h"
#include "entities/site.h"
#include "storage/writeconnection.h"

namespace tarnelLib::controller {

/// What the steps of a kind log when they fail. Support searches for these lines.
struct Messages {
    const char *add = nullptr;
    const char *getAll = nullptr;
    const char *getByField = nullptr;
    const char *get = nullptr;
    const char *update = nullptr;
    const char *remove = nullptr;
    const char *isExists = nullptr;
    const char *getOfSection = nullptr; ///< As `getAll`, of two enclosing records.
    const char *getOfSectionByField = nullptr;
};

/// The operations on the records of one kind. Each is one transaction: it returns true on success, has logged its
/// failure otherwise, and leaves nothing half-written. A record that is not there is a success that finds nothing.
///
/// A kind's file has its messages, and the steps in which it departs from the others (`tableoperations.h`).
template <class Record>
class Table
{
public:
    [[nodiscard]] static bool add(WriteConnection &writer, const std::vector<Record> &records);
    /// Hands the record back as it is stored then, as `update` does.
    [[nodiscard]] static bool add(WriteConnection &writer, const Record &record, Structures<Record> &stored);
    [[nodiscard]] static bool get(Connection &reader, Structures<Record> &found, Numbers parents);
    [[nodiscard]] static bool getByField(Connection &reader, Structures<Record> &found, const ModelField &field,
                                         std::u16string_view value, Numbers parents);
    [[nodiscard]] static bool getOne(Connection &reader, Structures<Record> &found, Numbers identifiers);
    [[nodiscard]] static bool isExists(Connection &reader, bool &isExists, Numbers identifiers);
    [[nodiscard]] static bool update(WriteConnection &writer, const Record &record, const ParentIds<Record> &parents,
                                     Structures<Record> &stored);
    [[nodiscard]] static bool remove(WriteConnection &writer, Numbers identifiers);

private:
    static const Messages messages;

    // The steps.

    static bool insertSteps(WriteConnection &writer, std::span<const Record> records);
    static bool updateSteps(WriteConnection &writer, const Record &record, const ParentIds<Record> &parents);
    static bool removeSteps(WriteConnection &writer, Numbers identifiers);
    /// Reads what structures have in tables of their own. `asked` are the identifiers that all of them share.
    enum class Selected { ByIdentifiers, ByField };
    static bool readParts(Connection &, std::span<ApiOf<Record>>, Numbers, Selected) { return true; }
};

/// The history. What its events borrow is joined or looked up, and hardly anything is as for other kinds.
template <>
class Table<Event>
{
public:
    /// Hands back those of the events whose device is stored, in the order of their identifiers.
    [[nodiscard]] static bool add(WriteConnection &writer, std::vector<Event> &&events, Structures<Event> &stored);
    [[nodiscard]] static bool add(WriteConnection &writer, const Event &event, Structures<Event> &stored);
    /// The events of known devices in a range of time, both ends included; without a range those with the affect flag.
    [[nodiscard]] static bool get(Connection &reader, Structures<Event> &found, Numbers range);
    [[nodiscard]] static bool isExists(Connection &reader, bool &isExists, Numbers identifiers);
    /// Hands back the event as it is stored then.
    [[nodiscard]] static bool removeAffectFlag(WriteConnection &writer, quint32 id, Structures<Event> &stored);
    [[nodiscard]] static bool clearBeforeDateExceptAffects(WriteConnection &writer, quint32 date);

    /// What a read of events selects, with the names that they borrow. An inner join leaves out the events of unknown
    /// devices.
    static sql::Selection selection(sql::JoinKind deviceJoin);
    /// The statement that reads an event, of whatever device.
    static Query prepareGetById(Connection &reader, quint32 id);
};

} // namespace tarnelLib::controller
