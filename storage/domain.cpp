#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<Domain>::messages{
    .add = "add domains error",
    .getAll = "get domains error",
    .getByField = "get domains by field error",
    .get = "get domain error",
    .update = "add or update domain error",
    .remove = "delete domain error",
};

template class Table<Domain>;

} // namespace tarnelLib::controller
