#include "bench/baseline.h"

#include <sqlite3.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

namespace baseline {

namespace {

constexpr std::string_view selectUsers =
    "SELECT UsersId,UsersName,UsersLogin,UsersContacts,UsersIsActive,UsersDomainId,UsersOrgId,UsersRoles,UsersPhone,"
    "DomainsId,DomainsName,DomainsOrgId,DomainsLocaleId,LocalesIso,LocalesDescription FROM Users "
    "LEFT JOIN Domains ON DomainsId = UsersDomainId LEFT JOIN Locales ON LocalesId = DomainsLocaleId";

void *allocate(std::size_t size)
{
    if (void *block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

bool isNull(sqlite3_stmt *row, int column)
{
    return sqlite3_column_type(row, column) == SQLITE_NULL;
}

unsigned short *text(sqlite3_stmt *row, int column)
{
    const void *units = sqlite3_column_text16(row, column);
    if (units == nullptr)
        return nullptr;
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes16(row, column));
    auto *copy = static_cast<unsigned short *>(allocate(size + sizeof(unsigned short)));
    std::memcpy(copy, units, size + sizeof(unsigned short)); // SQLite ends a text with a zero.
    return copy;
}

template <class Value>
Value *number(sqlite3_stmt *row, int column)
{
    if (isNull(row, column))
        return nullptr;
    auto *value = static_cast<Value *>(allocate(sizeof(Value)));
    *value = static_cast<Value>(sqlite3_column_int64(row, column));
    return value;
}

unsigned int identifier(sqlite3_stmt *row, int column)
{
    return static_cast<unsigned int>(sqlite3_column_int64(row, column));
}

api::Locale *readLocale(sqlite3_stmt *row, int idColumn, int isoColumn)
{
    auto *locale = static_cast<api::Locale *>(allocate(sizeof(api::Locale)));
    locale->id = identifier(row, idColumn);
    locale->iso = text(row, isoColumn);
    locale->description = text(row, isoColumn + 1);
    return locale;
}

api::Domain *readDomain(sqlite3_stmt *row)
{
    if (isNull(row, 9))
        return nullptr;
    auto *domain = static_cast<api::Domain *>(allocate(sizeof(api::Domain)));
    domain->id = identifier(row, 9);
    domain->name = text(row, 10);
    domain->orgId = number<unsigned int>(row, 11);
    domain->locale = isNull(row, 12) ? nullptr : readLocale(row, 12, 13);
    return domain;
}

void readUser(sqlite3_stmt *row, api::User &user)
{
    user.id = identifier(row, 0);
    user.name = text(row, 1);
    user.login = text(row, 2);
    user.contacts = text(row, 3);
    user.isActive = number<bool>(row, 4);
    user.domainId = number<unsigned int>(row, 5);
    user.orgId = number<unsigned int>(row, 6);
    user.roles = number<unsigned long long>(row, 7);
    user.phone = number<unsigned int>(row, 8);
    user.domain = readDomain(row);
}

void releaseUser(api::User &user)
{
    std::free(user.name);
    std::free(user.login);
    std::free(user.contacts);
    std::free(user.isActive);
    std::free(user.domainId);
    std::free(user.orgId);
    std::free(user.roles);
    std::free(user.phone);
    if (user.domain == nullptr)
        return;
    std::free(user.domain->name);
    std::free(user.domain->orgId);
    if (user.domain->locale != nullptr)
        freeLocale(user.domain->locale);
    std::free(user.domain);
}

void bindText(sqlite3_stmt *statement, int position, const generator::Text &text)
{
    if (text)
        sqlite3_bind_text64(statement, position, reinterpret_cast<const char *>(text->data()),
                            text->size() * sizeof(char16_t), SQLITE_STATIC, SQLITE_UTF16);
    else
        sqlite3_bind_null(statement, position);
}

template <class Value>
void bindNumber(sqlite3_stmt *statement, int position, const std::optional<Value> &value)
{
    if (value)
        sqlite3_bind_int64(statement, position, static_cast<sqlite3_int64>(*value));
    else
        sqlite3_bind_null(statement, position);
}

} // namespace

Connection::Connection(const char *path)
{
    check(sqlite3_open_v2(path, &m_connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr));
    sqlite3_busy_timeout(m_connection, 5000);
    run("PRAGMA synchronous=FULL");
    run("PRAGMA cache_size=-16384");
    m_getLocale = prepare("SELECT LocalesId,LocalesIso,LocalesDescription FROM Locales WHERE LocalesId = ?");
    m_getUser = prepare((std::string(selectUsers) + " WHERE UsersId = ?").c_str());
    m_getUsers = prepare(selectUsers.data());
    m_addUser = prepare("INSERT OR REPLACE INTO Users (UsersId,UsersName,UsersLogin,UsersContacts,UsersIsActive,"
                        "UsersDomainId,UsersOrgId,UsersRoles,UsersPhone) VALUES (?,?,?,?,?,?,?,?,?)");
}

Connection::~Connection()
{
    for (sqlite3_stmt *statement : {m_getLocale, m_getUser, m_getUsers, m_addUser})
        sqlite3_finalize(statement);
    sqlite3_close(m_connection);
}

api::Locale *Connection::getLocale(unsigned int id)
{
    sqlite3_bind_int64(m_getLocale, 1, id);
    api::Locale *locale = sqlite3_step(m_getLocale) == SQLITE_ROW ? readLocale(m_getLocale, 0, 1) : nullptr;
    check(sqlite3_reset(m_getLocale));
    return locale;
}

api::User *Connection::getUser(unsigned int id)
{
    sqlite3_bind_int64(m_getUser, 1, id);
    api::User *user = nullptr;
    if (sqlite3_step(m_getUser) == SQLITE_ROW) {
        user = static_cast<api::User *>(allocate(sizeof(api::User)));
        readUser(m_getUser, *user);
    }
    check(sqlite3_reset(m_getUser));
    return user;
}

api::User *Connection::getUsers(unsigned int &count)
{
    std::size_t capacity = 64;
    auto *users = static_cast<api::User *>(allocate(capacity * sizeof(api::User)));
    count = 0;
    while (sqlite3_step(m_getUsers) == SQLITE_ROW) {
        if (count == capacity) {
            capacity *= 2;
            void *grown = std::realloc(users, capacity * sizeof(api::User));
            if (grown == nullptr)
                throw std::bad_alloc();
            users = static_cast<api::User *>(grown);
        }
        readUser(m_getUsers, users[count++]);
    }
    check(sqlite3_reset(m_getUsers));
    return users;
}

void Connection::addUsers(std::span<const generator::User> users)
{
    run("BEGIN");
    for (const generator::User &user : users) {
        sqlite3_bind_int64(m_addUser, 1, user.id);
        bindText(m_addUser, 2, user.name);
        bindText(m_addUser, 3, user.login);
        bindText(m_addUser, 4, user.contacts);
        bindNumber(m_addUser, 5, user.isActive);
        bindNumber(m_addUser, 6, user.domainId);
        bindNumber(m_addUser, 7, user.orgId);
        bindNumber(m_addUser, 8, user.roles);
        bindNumber(m_addUser, 9, user.phone);
        sqlite3_step(m_addUser);
        check(sqlite3_reset(m_addUser));
    }
    run("COMMIT");
}

void Connection::foldLog()
{
    check(sqlite3_wal_checkpoint_v2(m_connection, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr));
}

sqlite3_stmt *Connection::prepare(const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    check(sqlite3_prepare_v3(m_connection, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    return statement;
}

void Connection::run(const char *sql)
{
    check(sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr));
}

void Connection::check(int code) const
{
    if (code != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(m_connection));
}

void freeLocale(api::Locale *locale)
{
    std::free(locale->iso);
    std::free(locale->description);
    std::free(locale);
}

void freeUser(api::User *user)
{
    releaseUser(*user);
    std::free(user);
}

void freeUsers(api::User *users, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i)
        releaseUser(users[i]);
    std::free(users);
}

} // namespace baseline
