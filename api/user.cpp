#include "api/families.h"

using tarnelLib::controller::User;

unsigned int addUsers(const unsigned short *text, unsigned int length)
{
    return api::addItems<User>({text, length});
}

unsigned int getUser(api::User **user, unsigned int id)
{
    return api::getItem<User>(user, id);
}

unsigned int getUsers(api::User **users, unsigned int *count)
{
    return api::getItems<User>(users, count);
}

unsigned int getUsersWithParams(api::User **users, unsigned int *count, const unsigned short *field,
                                unsigned int fieldLength, const unsigned short *value, unsigned int valueLength)
{
    return api::getItemsWithParams<User>(users, count, {field, fieldLength}, {value, valueLength});
}

unsigned int updateUser(api::User **user, const unsigned short *text, unsigned int length)
{
    return api::updateItem<User>(user, {text, length});
}

unsigned int deleteUser(const unsigned short *text, unsigned int length)
{
    return api::deleteItem<User>({text, length});
}

unsigned int freeUser(api::User *user)
{
    return api::freeItems<User>(user);
}

unsigned int freeUsersArray(api::User *users, unsigned int count)
{
    return api::freeItems<User>(users, count);
}
