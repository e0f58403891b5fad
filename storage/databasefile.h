#pragma once

#include <QString>

#include <sqlite3.h>

/// The database file as a thing on a disk: made, judged, removed, and kept with or without a log. Nothing here may open
/// it while a connection of this process lives: closing it again would drop that connection's locks.
namespace tarnelLib::controller::file {

/// Holds up other processes that launch in the file's directory, for as long as the object lives: a file that one of
/// them is about to make would look spoiled to the other, and be deleted.
class LaunchTurn
{
public:
    explicit LaunchTurn(const QString &path);
    LaunchTurn(const LaunchTurn &) = delete;
    LaunchTurn &operator=(const LaunchTurn &) = delete;
    ~LaunchTurn();

    /// False, and logged, if another launch does not come to its end. Where directories cannot be locked, every launch
    /// has its turn.
    [[nodiscard]] bool isTaken() const { return m_isTaken; }

private:
    int m_directory;
    bool m_isTaken;
};

/// True if there is certainly no file; one that cannot be looked at may be there.
[[nodiscard]] bool isMissing(const QString &path);

/// Makes the empty file, where there is none; a failure has logged the reason and leaves nothing behind.
[[nodiscard]] bool make(const QString &path);

/// True, and logged, if another process has the file locked, as each does that reads and writes it with a log.
[[nodiscard]] bool isInUse(const QString &path);

/// Removes the file and what SQLite keeps beside it; a failure has logged the reason.
[[nodiscard]] bool remove(const QString &path);

/// The system's error number for a file that Qt's driver could not open; 0 if there is none, or if it opens by now.
[[nodiscard]] int openingError(const QString &path);

/// True if the file can never be opened as it is: its mode forbids reading it, or it is a socket. `systemError` is why
/// it could not be opened.
[[nodiscard]] bool isUnopenable(const QString &path, int systemError);

/// Logs why there is no database to work with; the system's error number may be 0.
void logUnavailable(const QString &reason, int systemError);
/// The same, with the connection's last error.
void logUnavailable(sqlite3 *connection);

/// Runs statements whose rows are of no interest; gives the result code.
int execute(sqlite3 *connection, const char *statements);

/// Lets writes go to a log beside the file, or leaves the file as it is where that cannot be; false if it cannot be
/// read afterwards.
[[nodiscard]] bool useLog(sqlite3 *connection);

/// Makes the file complete in itself, so that it can be read anywhere and without anything made beside it. Not where
/// another connection uses the log.
void putLogAway(sqlite3 *connection);

} // namespace tarnelLib::controller::file
