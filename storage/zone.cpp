#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<Zone>::messages{
    .getAll = "get zones for device error",
    .getByField = "get zones for device by field error",
    .get = "get zones for device section by id error",
    .update = "add or update zone error",
    .remove = "delete zone error",
    .getOfSection = "get zones for device section error",
    .getOfSectionByField = "get zones for device section by field error",
};

template class Table<Zone>;

} // namespace tarnelLib::controller
