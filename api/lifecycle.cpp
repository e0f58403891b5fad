#include "api/cache.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <pthread.h>

#include <atomic>
#include <condition_variable>

namespace tarnelLib::api {

namespace {

using controller::Controller;

/// Written changes are in the main file at the latest this long after they were made, plus the folding itself.
constexpr int foldDelayMs = 1500;

/// One call of `launchCache`.
struct Launch {
    QEventLoop *loop = nullptr; ///< Set while an event loop runs, or is about to.
    bool isExitRequested = false;
};

/// What the whole library shares. It is never destroyed: a client may return from `main` while the cache runs.
struct Cache {
    /// Held by a call for as long as it works on the records, and while the controller is destroyed.
    std::mutex callMutex;

    /// Guards what follows. It is held for moments only, so that the state can be asked for during a long call.
    std::mutex mutex;
    std::condition_variable launchChanged;
    Launch *running = nullptr; ///< The launch that has the application object and the database.
    Launch *newest = nullptr;  ///< That one, or one that waits for it to end.
    std::unique_ptr<Controller> cacheController;
};

/// Set in a process that was forked off while a cache was running: the file and the threads are the parent's.
std::atomic<bool> isForkedOff = false;

Cache &cache()
{
    static Cache *const instance = [] {
        auto *created = new Cache;
        ::pthread_atfork([] { cache().mutex.lock(); }, [] { cache().mutex.unlock(); },
                         [] {
                             isForkedOff = cache().newest != nullptr;
                             cache().mutex.unlock();
                         });
        return created;
    }();
    return *instance;
}

/// Takes the controller away from everybody and destroys it when the call in progress has ended.
void destroyController()
{
    const std::lock_guard callLock(cache().callMutex);
    std::unique_ptr<Controller> controller;
    {
        const std::lock_guard lock(cache().mutex);
        controller = std::move(cache().cacheController);
    }
}

/// Asks the launch's event loop to end. The wish is an event of that loop, so that it is not lost before the loop runs.
void quit(QEventLoop &loop)
{
    QMetaObject::invokeMethod(
        &loop, [&loop] { loop.quit(); }, Qt::QueuedConnection);
}

/// Connects to the database and runs an event loop until an exit is asked for.
void runLaunch(Launch &launch)
{
    // A client that is a Qt program has its own application object, which stays untouched.
    int argumentCount = 0;
    std::unique_ptr<QCoreApplication> app;
    if (QCoreApplication::instance() == nullptr)
        app = std::make_unique<QCoreApplication>(argumentCount, nullptr);

    QEventLoop loop;
    QTimer foldTimer;
    foldTimer.setSingleShot(true);
    foldTimer.setInterval(foldDelayMs);
    QObject::connect(&foldTimer, &QTimer::timeout, [] {
        const CacheAccess access;
        if (Controller *controller = access.controller())
            controller->database().foldLog();
    });

    auto controller = std::make_unique<Controller>();
    QObject::connect(&controller->database(), &controller::Database::logGrew, &foldTimer, [&] { foldTimer.start(); });
    controller->connectToDatabase(QStringLiteral("CacheDb"));
    {
        const std::lock_guard lock(cache().mutex);
        if (launch.isExitRequested)
            return;
        cache().cacheController = std::move(controller);
        launch.loop = &loop;
    }
    const auto start = [] {
        const std::lock_guard lock(cache().mutex);
        if (cache().cacheController)
            cache().cacheController->onStart();
    };
    QMetaObject::invokeMethod(&loop, start, Qt::QueuedConnection);
    loop.exec();
    {
        const std::lock_guard lock(cache().mutex);
        launch.loop = nullptr;
    }
    destroyController(); // The client may have quit Qt's loops without an exit.
}

/// Makes it the launch that runs, after an earlier one has ended. False if there is one that is not on its way out, or
/// if an exit was asked for meanwhile.
bool enter(Launch &launch)
{
    std::unique_lock lock(cache().mutex);
    if (cache().newest != nullptr && !cache().newest->isExitRequested)
        return false;
    cache().newest = &launch;
    cache().launchChanged.wait(lock, [&] { return cache().running == nullptr || launch.isExitRequested; });
    if (!launch.isExitRequested) {
        cache().running = &launch;
        return true;
    }
    if (cache().newest == &launch)
        cache().newest = nullptr;
    return false;
}

void leave(Launch &launch)
{
    const std::lock_guard lock(cache().mutex);
    cache().running = nullptr;
    if (cache().newest == &launch)
        cache().newest = nullptr;
    cache().launchChanged.notify_all();
}

/// The controller, for questions that do not touch the database.
template <class Question>
unsigned int askController(unsigned int withoutCache, Question &&question)
{
    if (isForkedOff)
        return withoutCache;
    const std::lock_guard lock(cache().mutex);
    return cache().cacheController ? question(*cache().cacheController) : withoutCache;
}

} // namespace

CacheAccess::CacheAccess()
{
    if (isForkedOff)
        return;
    m_lock = std::unique_lock(cache().callMutex);
    const std::lock_guard lock(cache().mutex);
    m_controller = cache().cacheController.get();
}

namespace {

void startCache() noexcept
{
    Launch launch;
    if (isForkedOff || !enter(launch))
        return;
    try {
        runLaunch(launch);
    } catch (...) {
        qDebug("launch error");
    }
    leave(launch);
}

void stopCache() noexcept
{
    if (isForkedOff)
        return;
    {
        const std::lock_guard lock(cache().mutex);
        Launch *const launch = cache().newest;
        if (launch == nullptr || launch->isExitRequested)
            return;
        launch->isExitRequested = true;
        if (launch->loop != nullptr)
            quit(*launch->loop);
        cache().launchChanged.notify_all();
    }
    destroyController();
}

} // namespace

} // namespace tarnelLib::api

namespace api = tarnelLib::api;

void launchCache()
{
    api::startCache();
}

void exitCache()
{
    api::stopCache();
}

unsigned int getState()
{
    return api::askController(TARNEL_STATE_NONE, [](const auto &controller) { return controller.getState(); });
}

unsigned int getLaunchCacheResult()
{
    return api::askController(TARNEL_NOT_AVAILABLE, [](const auto &controller) {
        return static_cast<unsigned int>(controller.getConnectToDatabaseResult());
    });
}
