#pragma once

#include "controller/result.h"
#include "entities/event.h"
#include "entities/organization.h"
#include "entities/site.h"
#include "parsing/recordreader.h"

#include <array>
#include <vector>

/// From the text of a request to records and identifiers. `Result::Success` is the only code with which an output
/// may be used; how the text is read is known to this folder alone.
namespace tarnelLib::controller {

/// `{"D": {"items": [record, ...]}}`, with at least one record.
template <class Record>
[[nodiscard]] Result parseAddItems(std::u16string_view text, std::vector<Record> &records);

/// `{"D": record}`, where a record with parents names them beside its fields.
template <class Record>
[[nodiscard]] Result parseAddOrUpdateItem(std::u16string_view text, std::optional<Record> &record,
                                          ParentIds<Record> &parents);

/// The identifiers of the parents and then of the record itself.
template <class Record>
using Identifiers = std::array<quint32, parentCount<Record> + 1>;

/// `{"D": {key: identifier}}`, with the delete key of the kind, and of its parents. The type of an identifier is not
/// looked at: what is no number reads as 0.
template <class Record>
[[nodiscard]] Result parseDelete(std::u16string_view text, Identifiers<Record> &identifiers);

/// As a delete request, with the key of the event's identifier.
[[nodiscard]] Result parseRemoveAffectEvent(std::u16string_view text, quint32 &id);

} // namespace tarnelLib::controller
