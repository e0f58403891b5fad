#include "storage/sqlitedatabase.h"

namespace tarnelLib::controller {

bool SQLiteDatabase::add(const std::vector<User> &users)
{
    return inTransaction([&] { return insertAll(std::span(users), "add users error"); });
}

bool SQLiteDatabase::get(std::vector<User> &users)
{
    return readAll(m_preparer.prepareGet<User>(), users, "get users error");
}

bool SQLiteDatabase::get(std::vector<User> &users, const ModelField &field, std::u16string_view value)
{
    return readAll(m_preparer.prepareGetByField<User>(field, value), users, "get users by field error");
}

bool SQLiteDatabase::get(std::optional<User> &user, quint32 id)
{
    return readOne(m_preparer.prepareGet<User>(id), user, "get user error");
}

bool SQLiteDatabase::update(std::optional<User> &user)
{
    return inTransaction([&] {
        const quint32 id = user->id;
        // The message of the add: support reads it so in every log there is.
        return run(m_preparer.prepareAddOrUpdate(*user), "add user error") && get(user, id);
    });
}

bool SQLiteDatabase::deleteUser(quint32 id)
{
    return inTransaction([&] { return run(m_preparer.prepareDelete<User>(id), "delete user error"); });
}

} // namespace tarnelLib::controller
