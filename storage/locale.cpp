#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<Locale>::messages{
    .add = "add locales error",
    .getAll = "get locales error",
    .getByField = "get locales by field error",
    .get = "get locale error",
};

template class Table<Locale>;

} // namespace tarnelLib::controller
