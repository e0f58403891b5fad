#pragma once

#include "controller/controller.h"

#include <mutex>

namespace tarnelLib::api {

/// Holds the one lock around a call that touches the cache, and with it the running cache's controller: null if no
/// cache is running, or if it runs in the process that this one was forked from.
class CacheAccess
{
public:
    CacheAccess();

    [[nodiscard]] controller::Controller *controller() const { return m_controller; }

private:
    std::unique_lock<std::mutex> m_lock;
    controller::Controller *m_controller = nullptr;
};

} // namespace tarnelLib::api
