#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<Contract>::messages{
    .add = "add contracts error",
    .getAll = "get contracts error",
    .getByField = "get contracts by field error",
    .get = "get contract by id error",
    .update = "add or update contract error",
    .remove = "delete contract error",
};

template class Table<Contract>;

} // namespace tarnelLib::controller
