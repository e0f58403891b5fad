#pragma once

#include "faults/faults.h"

/// Memory that is refused: a program that is linked with this has its `malloc`, `realloc` and `new` from here.
namespace faults {

/// This thread's requests out of the library's own code. Qt does not promise to survive a refusal.
extern constinit thread_local Faults libraryMemory;

/// This thread's requests out of SQLite, once `useSqliteMemory` has been called.
extern constinit thread_local Faults sqliteMemory;

/// Must come before anything else of SQLite's.
void useSqliteMemory();

} // namespace faults
