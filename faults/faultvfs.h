#pragma once

#include "faults/faults.h"
#include "faults/powercut.h"

#include <cerrno>
#include <chrono>
#include <thread>

/// A file system for SQLite that carries everything out on the real one, and fails where it is told to.
namespace faults {

/// What SQLite asks of a file system; the values are combined with "|".
enum Operation : unsigned int {
    Open = 1,
    Look = 2, ///< Whether a file is there, and how long it is.
    Read = 4,
    Write = 8,
    Sync = 16,
    Truncate = 32,
    Delete = 64,
    Lock = 128,
    SharedMemory = 256,
};

/// The system's error.
enum class Failure {
    InputOutput = EIO,
    DiskFull = ENOSPC,
    NoDescriptor = EMFILE,
    NoPermission = EACCES,
    Locked = EAGAIN
};

struct Effects {
    int failed = 0; ///< How many operations have failed.
    std::chrono::microseconds waited{};
};

/// Makes it the process's default, also for connections that others open. Waiting for a lock takes no time in it, and
/// nothing is flushed.
void useFaultVfs();

/// From now on such operations of all threads, or of one, fail as the faults say.
void failOperations(unsigned int operations, Failure failure, Faults faults, std::thread::id thread = {});

/// Without it there is no log for reads beside writes in files that are opened from now on.
void offerSharedMemory(bool isOffered);

/// From now on tells it what is done to files; null ends that. Not while a file is in use.
void keepUnflushed(PowerCut *cut);

/// What has come of it until now.
Effects effectsSoFar();

/// Ends it; gives what has come of it.
Effects endFailures();

} // namespace faults
