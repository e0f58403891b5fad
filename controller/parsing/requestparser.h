#pragma once

#include "controller/entities/user.h"
#include "controller/result.h"

#include <vector>

/// From the text of a request to records and identifiers. `Result::Success` is the only code with which an output
/// may be used; how the text is read is known to this folder alone.
namespace tarnelLib::controller
{

/// `{"D": {"items": [record, ...]}}`, with at least one record.
template <class Record>
[[nodiscard]] Result parseAddItems(std::u16string_view text, std::vector<Record> &records);

/// `{"D": record}`.
template <class Record>
[[nodiscard]] Result parseAddOrUpdateItem(std::u16string_view text, std::optional<Record> &record);

/// `{"D": {key: identifier}}`, with the delete key of the kind. The identifier's type is not looked at: what is no
/// number reads as 0.
template <class Record>
[[nodiscard]] Result parseDelete(std::u16string_view text, quint32 &id);

} // namespace tarnelLib::controller
