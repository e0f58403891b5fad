#pragma once

#include "generator/records.h"

#include <tarnel/tarnel.h>

#include <span>

struct sqlite3;
struct sqlite3_stmt;

/// What the library does, as one would write it by hand on SQLite's C API for these kinds alone: kept statements, and
/// the same structures in the client's hands. This is the measure of the library's speed.
namespace baseline {

namespace api = tarnelLib::api;

/// A connection to a file that the library has made, with the settings that the library uses. Failures are exceptions.
class Connection
{
public:
    explicit Connection(const char *path);
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection();

    /// Null if there is no such locale.
    api::Locale *getLocale(unsigned int id);
    /// Null if there is no such user.
    api::User *getUser(unsigned int id);
    api::User *getUsers(unsigned int &count);
    void addUsers(std::span<const generator::User> users);

    /// Folds the log back into the file.
    void foldLog();

private:
    sqlite3_stmt *prepare(const char *sql);
    void run(const char *sql);
    void check(int code) const;

    sqlite3 *m_connection = nullptr;
    sqlite3_stmt *m_getLocale = nullptr;
    sqlite3_stmt *m_getUser = nullptr;
    sqlite3_stmt *m_getUsers = nullptr;
    sqlite3_stmt *m_addUser = nullptr;
};

void freeLocale(api::Locale *locale);
void freeUser(api::User *user);
void freeUsers(api::User *users, unsigned int count);

} // namespace baseline
