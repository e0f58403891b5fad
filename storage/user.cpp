#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<User>::messages{
    .add = "add users error",
    .getAll = "get users error",
    .getByField = "get users by field error",
    .get = "get user error",
    .update = "add user error", // As support reads it in every log there is.
    .remove = "delete user error",
};

template class Table<User>;

} // namespace tarnelLib::controller
