#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<Contractor>::messages{
    .add = "add contractors error",
    .getAll = "get contractors by field error", // As support reads it in every log there is.
    .getByField = "get contractors by field error",
    .get = "get contractor by id error",
    .update = "add or update contractor error",
    .remove = "delete contractor error",
};

template class Table<Contractor>;

} // namespace tarnelLib::controller
