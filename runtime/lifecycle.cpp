#include "runtime/lifecycle.h"

#include "diagnostics/suspicions.h"
#include "runtime/eventdispatcher.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QScopeGuard>
#include <QThread>
#include <QTimer>

#include <pthread.h>

#include <atomic>
#include <clocale>
#include <condition_variable>
#include <mutex>
#include <string>

namespace tarnelLib::runtime {

using controller::Controller;

/// One call of `launchCache`.
struct Launch {
    QEventLoop *loop = nullptr; ///< Set while an event loop runs, or is about to.
    bool isExitRequested = false;
    unsigned int calls = 0;                 ///< In progress.
    std::unique_ptr<Controller> controller; ///< From the time the database is connected.
};

namespace {

/// Written changes are in the main file at the latest this long after they were made, plus the folding itself.
constexpr int foldDelayMs = 1000;
constexpr int foldRetryMs = 200;

/// Frequent reads keep other processes from emptying the log no longer than this.
constexpr int holdStateMs = 100;

/// What the whole library shares. It is never destroyed: a client may return from `main` while the cache runs.
struct Cache {
    /// Guards everything here and in the launches. It is held for moments only, so that the state can be asked for
    /// during a long call.
    std::mutex mutex;
    std::condition_variable launchChanged;
    std::condition_variable callsEnded;
    std::shared_ptr<Launch> running; ///< The launch that has the application object and the database.
    std::shared_ptr<Launch> newest;  ///< That one, or one that waits for it to end.
};

/// Set in a process that was forked off while a cache was running: the file and the threads are the parent's.
std::atomic<bool> isForkedOff = false;

Cache &cache();

Cache *makeCache()
{
    ::pthread_atfork([] { cache().mutex.lock(); }, [] { cache().mutex.unlock(); },
                     [] {
                         isForkedOff = cache().newest != nullptr || cache().running != nullptr;
                         cache().mutex.unlock();
                     });
    return new Cache;
}

/// Made while the library is loaded: were it made by the first call, a fork in the middle of that would leave the child
/// waiting for it for ever.
Cache *const sharedCache = makeCache();

Cache &cache()
{
    return *sharedCache;
}

/// Destroys the launch's controller when the calls in progress have ended.
void destroyController(Launch &launch, std::unique_lock<std::mutex> &lock)
{
    if (launch.controller)
        launch.controller->close();
    cache().callsEnded.wait(lock, [&] { return launch.calls == 0; });
    if (!launch.controller)
        return;
    // It counts as a call: the launch must not end before the file is closed.
    ++launch.calls;
    std::unique_ptr<Controller> controller = std::move(launch.controller);
    lock.unlock();
    controller.reset();
    lock.lock();
    --launch.calls;
    cache().callsEnded.notify_all();
}

/// Makes an application object. Qt's sets the locale of the process to that of the environment, which would change how
/// the client's own `printf` writes numbers: it is set back.
std::unique_ptr<QCoreApplication> makeApplication(int &argumentCount)
{
    if (QAbstractEventDispatcher::instance() == nullptr)
        QThread::currentThread()->setEventDispatcher(new EventDispatcher);
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    auto app = std::make_unique<QCoreApplication>(argumentCount, nullptr);
    if (locale != std::setlocale(LC_ALL, nullptr))
        std::setlocale(LC_ALL, locale.c_str());
    return app;
}

// What crosses from one thread to another does so by name: a functor would be compiled here and counted in Qt, whose
// atomics ThreadSanitizer does not see.

/// Connects to the database and runs an event loop until an exit is asked for.
void runLaunch(Launch &launch)
{
    // A client that is a Qt program has its own application object, which stays untouched.
    int argumentCount = 0;
    std::unique_ptr<QCoreApplication> app;
    if (QCoreApplication::instance() == nullptr)
        app = makeApplication(argumentCount);

    QEventLoop loop;
    QTimer foldTimer;
    foldTimer.setSingleShot(true);
    foldTimer.setInterval(foldDelayMs);
    QObject::connect(&foldTimer, &QTimer::timeout, [&] {
        withController(
            [&](Controller &running) {
                const bool isFolded = running.foldLog();
                foldTimer.setInterval(isFolded ? foldDelayMs : foldRetryMs);
                if (!isFolded)
                    foldTimer.start();
                return Result::Success;
            },
            "launchCache");
    });

    QTimer holdTimer;
    holdTimer.setSingleShot(true);
    holdTimer.setInterval(holdStateMs);
    QObject::connect(&holdTimer, &QTimer::timeout, [] {
        withController([](Controller &running) { return running.letGoOfState(), Result::Success; }, "launchCache");
    });

    diagnostics::suspicions.forget();
    auto controller = std::make_unique<Controller>([&] { QMetaObject::invokeMethod(&foldTimer, "start"); },
                                                   [&] { QMetaObject::invokeMethod(&holdTimer, "start"); });
    controller->connectToDatabase(QStringLiteral("CacheDb"));
    {
        const std::lock_guard lock(cache().mutex);
        if (launch.isExitRequested)
            return;
        launch.controller = std::move(controller);
        launch.loop = &loop;
    }
    // Also when the client has quit Qt's loops without an exit.
    const auto withdraw = qScopeGuard([&] {
        std::unique_lock lock(cache().mutex);
        launch.isExitRequested = true;
        launch.loop = nullptr;
        destroyController(launch, lock);
    });
    const auto start = [&] {
        const std::lock_guard lock(cache().mutex);
        if (launch.controller)
            launch.controller->onStart();
    };
    QMetaObject::invokeMethod(&loop, start, Qt::QueuedConnection);
    loop.exec();
}

/// Makes it the launch that runs, after an earlier one has ended. False if there is one that is not on its way out, or
/// if an exit was asked for meanwhile.
bool enter(const std::shared_ptr<Launch> &launch)
{
    std::unique_lock lock(cache().mutex);
    if (cache().newest != nullptr && !cache().newest->isExitRequested)
        return false;
    cache().newest = launch;
    cache().launchChanged.wait(lock, [&] { return cache().running == nullptr || launch->isExitRequested; });
    if (launch->isExitRequested)
        return false;
    cache().running = launch;
    return true;
}

void leave(const std::shared_ptr<Launch> &launch)
{
    const std::lock_guard lock(cache().mutex);
    for (auto *place : {&cache().running, &cache().newest}) {
        if (*place == launch)
            place->reset();
    }
    cache().launchChanged.notify_all();
}

} // namespace

CacheAccess::CacheAccess()
{
    if (isForkedOff)
        return;
    const auto lock = controller::lockBriefly(cache().mutex);
    Launch *const launch = cache().running.get();
    // None when the launch is on its way out: a busy client must not hold up the exit.
    if (launch == nullptr || launch->isExitRequested || !launch->controller)
        return;
    m_launch = launch;
    m_controller = launch->controller.get();
    ++launch->calls;
}

void CacheAccess::noteAbsence() noexcept
{
    if (isForkedOff)
        diagnostics::note("this process was forked off one in which a cache was running, and has none itself");
    else
        diagnostics::note("no cache is running");
}

CacheAccess::~CacheAccess()
{
    if (m_launch == nullptr)
        return;
    const auto lock = controller::lockBriefly(cache().mutex);
    if (--m_launch->calls == 0 && m_launch->isExitRequested)
        cache().callsEnded.notify_all();
}

void startCache() noexcept
{
    if (isForkedOff)
        return;
    std::shared_ptr<Launch> launch;
    try {
        launch = std::make_shared<Launch>();
        if (enter(launch))
            runLaunch(*launch);
    } catch (...) {
        qDebug("launch error");
    }
    leave(launch);
}

void stopCache() noexcept
{
    if (isForkedOff)
        return;
    std::unique_lock lock(cache().mutex);
    if (const auto &launch = cache().newest; launch != nullptr && !launch->isExitRequested) {
        launch->isExitRequested = true;
        // The wish is an event of the loop, so that it is not lost before the loop runs.
        if (launch->loop != nullptr)
            QMetaObject::invokeMethod(launch->loop, "quit", Qt::QueuedConnection);
        cache().launchChanged.notify_all();
    }
    if (const std::shared_ptr<Launch> launch = cache().running)
        destroyController(*launch, lock);
}

} // namespace tarnelLib::runtime
