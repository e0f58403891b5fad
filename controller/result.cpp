#include "controller/result.h"

namespace tarnelLib {

// A code without a case is a warning, and so an error.
Description describe(Result result)
{
    switch (result) {
    case Result::Success:
        return {"TARNEL_SUCCESS", "", "Carry on. As launch result: the stored records are there."};
    case Result::AllocationFailed:
        return {"TARNEL_ALLOCATION_FAILED", "out of memory",
                "Memory is short: free what you hold, ask for less. A write may have been stored: read before you "
                "repeat it."};
    case Result::InvalidRequest:
        return {"TARNEL_INVALID_REQUEST", "a key is missing, or a value is of the wrong type",
                "Look at the request: a key is missing, or a value is null or of the wrong type. Nothing was stored."};
    case Result::DatabaseUnavailable:
        return {"TARNEL_DATABASE_UNAVAILABLE", "no database could be opened or made",
                "The file is untouched. Look at the reason: rights, a full disk, no free descriptor, another process "
                "that holds the file. Exit, mend it, launch again."};
    case Result::ReadFailed:
        return {"TARNEL_READ_FAILED", "the database could not be read",
                "The file could not be read: look at the reason."};
    case Result::NotFound:
        return {"TARNEL_NOT_FOUND", "no such record",
                "Not an error: there is no such record, or none at all. Ask the server, if it should be there."};
    case Result::WriteFailed:
        return {"TARNEL_WRITE_FAILED", "the database could not be written",
                "Nothing was stored: look at the reason, which is often a full disk, another process that writes, or a "
                "file that was moved or deleted. Repeat later."};
    case Result::InvalidArgument:
        return {"TARNEL_INVALID_ARGUMENT", "an argument cannot be used", "Look at the call: it has a mistake."};
    case Result::ParentNotFound:
        return {"TARNEL_PARENT_NOT_FOUND", "what it belongs to is not in the cache",
                "Stored, but the device or section that it belongs to is not in the cache. Ask the server for the "
                "device."};
    case Result::DatabaseCreated:
        return {"TARNEL_DATABASE_CREATED", "", "A new file. Ask the server for everything."};
    case Result::DatabaseRecreatedTablesInvalid:
        return {"TARNEL_DATABASE_RECREATED_TABLES_INVALID", "",
                "A table was missing or different. Exit, delete CacheDb, launch again."};
    case Result::DatabaseRecreatedOpenFailed:
        return {"TARNEL_DATABASE_RECREATED_OPEN_FAILED", "",
                "The file could not be opened. Exit, delete CacheDb, launch again."};
    case Result::DatabaseRecreatedVersionMismatch:
        return {"TARNEL_DATABASE_RECREATED_VERSION_MISMATCH", "",
                "Not a cache of this version, or no database at all. Exit, delete CacheDb, launch again."};
    case Result::NotAvailable:
        return {"TARNEL_NOT_AVAILABLE", "no cache is running", "No cache is running: launch it, and wait for state 2."};
    }
    return {"", "", ""};
}

} // namespace tarnelLib
