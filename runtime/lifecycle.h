#pragma once

/// The cache from its launch to its exit.
namespace tarnelLib::runtime {

/// Connects to the database and runs an event loop on this thread until an exit is asked for. Returns at once if a
/// cache is running already, or if this process was forked from one in which it is.
void startCache() noexcept;

/// Asks the running launch to end, waits for the calls in progress and closes the file.
void stopCache() noexcept;

// These never wait for a call.

[[nodiscard]] unsigned int state();
[[nodiscard]] unsigned int launchResult();

} // namespace tarnelLib::runtime
