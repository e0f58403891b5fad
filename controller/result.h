#pragma once

#include <tarnel/tarnel.h>

namespace tarnelLib {

/// The outcome of every operation, from the storage's callers up to the client; documented at `TarnelResult`.
enum class Result : unsigned int {
    Success = TARNEL_SUCCESS,
    AllocationFailed = TARNEL_ALLOCATION_FAILED,
    InvalidRequest = TARNEL_INVALID_REQUEST,
    DatabaseUnavailable = TARNEL_DATABASE_UNAVAILABLE,
    ReadFailed = TARNEL_READ_FAILED,
    NotFound = TARNEL_NOT_FOUND,
    WriteFailed = TARNEL_WRITE_FAILED,
    InvalidArgument = TARNEL_INVALID_ARGUMENT,
    ParentNotFound = TARNEL_PARENT_NOT_FOUND,
    DatabaseCreated = TARNEL_DATABASE_CREATED,
    DatabaseRecreatedTablesInvalid = TARNEL_DATABASE_RECREATED_TABLES_INVALID,
    DatabaseRecreatedOpenFailed = TARNEL_DATABASE_RECREATED_OPEN_FAILED,
    DatabaseRecreatedVersionMismatch = TARNEL_DATABASE_RECREATED_VERSION_MISMATCH,
    NotAvailable = TARNEL_NOT_AVAILABLE,
};

/// What there is to say about a code, whatever the call was.
struct Description {
    const char *name;
    const char *reason; ///< Why such a call failed, as far as the code tells it.
    const char *advice; ///< What a client does then.
};

/// Empty texts for a number that is no code.
[[nodiscard]] Description describe(Result result);

} // namespace tarnelLib
