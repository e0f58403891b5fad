#include "faults/faultvfs.h"

#include <sqlite3.h>

#include <array>
#include <bit>
#include <mutex>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace faults {

namespace {

struct Plan {
    unsigned int operations = 0;
    Failure failure = Failure::InputOutput;
    Faults faults;
    std::thread::id thread;
    Effects effects;
};

std::mutex mutex;
Plan plan;
PowerCut *powerCut = nullptr; ///< Set while it is wanted.

/// The code that SQLite's own file system gives.
int codeOf(unsigned int operation, Failure failure)
{
    constexpr std::array codes = {SQLITE_CANTOPEN,     SQLITE_IOERR_ACCESS, SQLITE_IOERR_READ,
                                  SQLITE_IOERR_WRITE,  SQLITE_IOERR_FSYNC,  SQLITE_IOERR_TRUNCATE,
                                  SQLITE_IOERR_DELETE, SQLITE_IOERR_LOCK,   SQLITE_IOERR_SHMMAP};
    if (failure == Failure::Locked && operation == Lock)
        return SQLITE_BUSY;
    if (failure == Failure::DiskFull && operation == Write)
        return SQLITE_FULL;
    if (failure != Failure::InputOutput && operation == SharedMemory)
        return failure == Failure::DiskFull ? SQLITE_IOERR_SHMSIZE : SQLITE_CANTOPEN;
    return codes.at(static_cast<std::size_t>(std::countr_zero(operation)));
}

/// SQLITE_OK for an operation that is to be carried out.
int refusal(unsigned int operation)
{
    const std::lock_guard lock(mutex);
    const bool isMeant = plan.thread == std::thread::id() || plan.thread == std::this_thread::get_id();
    if ((plan.operations & operation) == 0 || !isMeant || !plan.faults.failsNow())
        return SQLITE_OK;
    ++plan.effects.failed;
    errno = static_cast<int>(plan.failure);
    return codeOf(operation, plan.failure);
}

/// An open file; that of the real file system lies right behind it.
struct File : sqlite3_file {
    const char *path;  ///< Null for a temporary one.
    bool isNewJournal; ///< With the first flush of which its directory is flushed, too.

    [[nodiscard]] sqlite3_file *real() { return reinterpret_cast<sqlite3_file *>(this + 1); }
};

sqlite3_file *realOf(sqlite3_file *file)
{
    return static_cast<File *>(file)->real();
}

constexpr unsigned int none = 0;

/// A method of an open file, which is an operation that can fail, or none.
template <unsigned int operation, auto method, class... Parameters>
int carryOut(sqlite3_file *file, Parameters... parameters)
{
    if (const int code = refusal(operation); code != SQLITE_OK)
        return code;
    sqlite3_file *const real = realOf(file);
    return (real->pMethods->*method)(real, parameters...);
}

/// Tells the power cut of something that was done to a file.
template <class... Arguments>
int noted(int code, sqlite3_file *file, void (PowerCut::*event)(const std::string &, Arguments...),
          std::type_identity_t<Arguments>... arguments)
{
    const char *const path = static_cast<File *>(file)->path;
    if (code == SQLITE_OK && powerCut != nullptr && path != nullptr)
        (powerCut->*event)(path, std::move(arguments)...);
    return code;
}

int write(sqlite3_file *file, const void *bytes, int size, sqlite3_int64 offset)
{
    const int code = carryOut<Write, &sqlite3_io_methods::xWrite>(file, bytes, size, offset);
    return noted(code, file, &PowerCut::isWritten, static_cast<std::size_t>(offset),
                 std::string(static_cast<const char *>(bytes), static_cast<std::size_t>(size)));
}

int truncate(sqlite3_file *file, sqlite3_int64 size)
{
    const int code = carryOut<Truncate, &sqlite3_io_methods::xTruncate>(file, size);
    return noted(code, file, &PowerCut::isTruncated, static_cast<std::size_t>(size));
}

int flush(sqlite3_file *file, int)
{
    const int code = noted(refusal(Sync), file, &PowerCut::isFlushed);
    if (code == SQLITE_OK && powerCut != nullptr && std::exchange(static_cast<File *>(file)->isNewJournal, false))
        powerCut->isDirectoryFlushed();
    return code;
}

int mapSharedMemory(sqlite3_file *file, int page, int size, int extend, void volatile **memory)
{
    *memory = nullptr;
    return carryOut<SharedMemory, &sqlite3_io_methods::xShmMap>(file, page, size, extend, memory);
}

/// What was locked can always be unlocked.
int lockSharedMemory(sqlite3_file *file, int offset, int count, int flags)
{
    const int code = (flags & SQLITE_SHM_UNLOCK) != 0 ? SQLITE_OK : refusal(Lock);
    return code != SQLITE_OK ? code : carryOut<none, &sqlite3_io_methods::xShmLock>(file, offset, count, flags);
}

sqlite3_io_methods methods = {
    .iVersion = 2,
    .xClose = carryOut<none, &sqlite3_io_methods::xClose>,
    .xRead = carryOut<Read, &sqlite3_io_methods::xRead>,
    .xWrite = write,
    .xTruncate = truncate,
    .xSync = flush,
    .xFileSize = carryOut<Look, &sqlite3_io_methods::xFileSize>,
    .xLock = carryOut<Lock, &sqlite3_io_methods::xLock>,
    .xUnlock = carryOut<none, &sqlite3_io_methods::xUnlock>,
    .xCheckReservedLock = carryOut<Lock, &sqlite3_io_methods::xCheckReservedLock>,
    .xFileControl = carryOut<none, &sqlite3_io_methods::xFileControl>,
    .xSectorSize = carryOut<none, &sqlite3_io_methods::xSectorSize>,
    .xDeviceCharacteristics = carryOut<none, &sqlite3_io_methods::xDeviceCharacteristics>,
    .xShmMap = mapSharedMemory,
    .xShmLock = lockSharedMemory,
    .xShmBarrier = [](sqlite3_file *file) { realOf(file)->pMethods->xShmBarrier(realOf(file)); },
    .xShmUnmap = carryOut<none, &sqlite3_io_methods::xShmUnmap>,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

sqlite3_vfs *realVfs = nullptr;

int open(sqlite3_vfs *, const char *name, sqlite3_file *memory, int flags, int *outFlags)
{
    auto *const file = ::new (memory) File();
    file->path = name;
    file->isNewJournal =
        (flags & SQLITE_OPEN_CREATE) != 0 && (flags & (SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL)) != 0;
    file->pMethods = nullptr;
    file->real()->pMethods = nullptr;
    int code = noted(refusal(Open), file, &PowerCut::isOpened);
    if (code == SQLITE_OK)
        code = realVfs->xOpen(realVfs, name, file->real(), flags, outFlags);
    if (file->real()->pMethods != nullptr)
        file->pMethods = &methods;
    return code;
}

} // namespace

void useFaultVfs()
{
    realVfs = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs vfs = *realVfs;
    vfs.zName = "faults";
    vfs.szOsFile += static_cast<int>(sizeof(File));
    vfs.xOpen = open;
    vfs.xDelete = [](sqlite3_vfs *, const char *name, int syncDirectory) {
        int code = refusal(Delete);
        if (code == SQLITE_OK)
            code = realVfs->xDelete(realVfs, name, 0);
        File file{{}, name, false};
        noted(code, &file, &PowerCut::isRemoved);
        if (code == SQLITE_OK && powerCut != nullptr && syncDirectory != 0)
            powerCut->isDirectoryFlushed();
        return code;
    };
    vfs.xAccess = [](sqlite3_vfs *, const char *name, int flags, int *result) {
        const int code = refusal(Look);
        return code != SQLITE_OK ? code : realVfs->xAccess(realVfs, name, flags, result);
    };
    vfs.xSleep = [](sqlite3_vfs *, int microseconds) {
        const std::lock_guard lock(mutex);
        plan.effects.waited += std::chrono::microseconds(microseconds);
        return microseconds;
    };
    sqlite3_vfs_register(&vfs, 1);
}

void failOperations(unsigned int operations, Failure failure, Faults faults, std::thread::id thread)
{
    const std::lock_guard lock(mutex);
    plan = {operations, failure, faults, thread, {}};
}

Effects endFailures()
{
    const std::lock_guard lock(mutex);
    return std::exchange(plan, {}).effects;
}

void offerSharedMemory(bool isOffered)
{
    methods.iVersion = isOffered ? 2 : 1;
}

void keepUnflushed(PowerCut *cut)
{
    powerCut = cut;
}

Effects effectsSoFar()
{
    const std::lock_guard lock(mutex);
    return plan.effects;
}

} // namespace faults
