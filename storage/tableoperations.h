#pragma once

#include "storage/batch.h"
#include "storage/table.h"

/// What the operations of a kind are made of, for the kinds' files: each states its messages, specialises the steps in
/// which it departs, and instantiates its `Table`.
namespace tarnelLib::controller {

/// Whether reads of a kind take more than one statement.
template <class Record>
constexpr bool readsParts = false;

/// Inserts devices with all their parts; what is stored for them already and is not in the records stays.
[[nodiscard]] bool insertDevices(WriteConnection &writer, std::span<const Device *const> devices);

template <class Record, class Steps>
bool inSnapshotOf(Connection &reader, Steps &&steps)
{
    if constexpr (readsParts<Record>)
        return reader.inSnapshot(steps);
    else
        return steps(); // One statement is a snapshot by itself.
}

template <class Record>
bool Table<Record>::add(WriteConnection &writer, const std::vector<Record> &records)
{
    return writer.inTransaction([&] { return insertSteps(writer, records); });
}

template <class Record>
bool Table<Record>::add(WriteConnection &writer, const Record &record, Structures<Record> &stored)
{
    return writer.inTransaction([&] {
        return insertSteps(writer, {&record, 1}) && getOne(writer, stored, {&record.id, 1});
    });
}

template <class Record>
bool Table<Record>::insertSteps(WriteConnection &writer, std::span<const Record> records)
{
    return insertAll(writer, records, messages.add);
}

template <class Record>
bool Table<Record>::get(Connection &reader, Structures<Record> &found, Numbers parents)
{
    return inSnapshotOf<Record>(reader, [&] {
        return reader.readAll(reader.prepareGet<Record>(parents), found,
                              parents.size() < 2 ? messages.getAll : messages.getOfSection) &&
               readParts(reader, found.all(), parents, Selected::ByIdentifiers);
    });
}

template <class Record>
bool Table<Record>::getByField(Connection &reader, Structures<Record> &found, const ModelField &field,
                               std::u16string_view value, Numbers parents)
{
    return inSnapshotOf<Record>(reader, [&] {
        return reader.readAll(reader.prepareGetByField<Record>(field, value, parents), found,
                              parents.size() < 2 ? messages.getByField : messages.getOfSectionByField) &&
               readParts(reader, found.all(), parents, Selected::ByField);
    });
}

template <class Record>
bool Table<Record>::getOne(Connection &reader, Structures<Record> &found, Numbers identifiers)
{
    return inSnapshotOf<Record>(reader, [&] {
        return reader.readOne(reader.prepareGet<Record>(identifiers), found, messages.get) &&
               (found.isEmpty() || readParts(reader, found.all(), identifiers, Selected::ByIdentifiers));
    });
}

template <class Record>
bool Table<Record>::isExists(Connection &reader, bool &isExists, Numbers identifiers)
{
    return reader.readExists(reader.prepareIsExists<Record>(identifiers), isExists, messages.isExists);
}

template <class Record>
bool Table<Record>::update(WriteConnection &writer, const Record &record, const ParentIds<Record> &parents,
                           Structures<Record> &stored)
{
    Identifiers<Record> identifiers{};
    *std::copy(parents.begin(), parents.end(), identifiers.begin()) = record.id;
    return writer.inTransaction(
        [&] { return updateSteps(writer, record, parents) && getOne(writer, stored, identifiers); });
}

template <class Record>
bool Table<Record>::updateSteps(WriteConnection &writer, const Record &record, const ParentIds<Record> &parents)
{
    return writer.run(writer.prepareAddOrUpdate(record, parents), messages.update);
}

template <class Record>
bool Table<Record>::remove(WriteConnection &writer, Numbers identifiers)
{
    return writer.inTransaction([&] { return removeSteps(writer, identifiers); });
}

template <class Record>
bool Table<Record>::removeSteps(WriteConnection &writer, Numbers identifiers)
{
    return writer.remove<Record>(identifiers, messages.remove);
}

} // namespace tarnelLib::controller
