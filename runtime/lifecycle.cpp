#include "runtime/lifecycle.h"

#include "runtime/cacheaccess.h"
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
    quint64 number = 0;         ///< Tells launches apart: a later one is likely to have the same address.
    QEventLoop *loop = nullptr; ///< Set while an event loop runs, or is about to.
    bool isExitRequested = false;
    unsigned int calls = 0; ///< In progress.
};

namespace {

/// Written changes are in the main file at the latest this long after they were made, plus the folding itself.
constexpr int foldDelayMs = 1500;

/// What the whole library shares. It is never destroyed: a client may return from `main` while the cache runs.
struct Cache {
    /// Guards everything here and in the launches. It is held for moments only, so that the state can be asked for
    /// during a long call.
    std::mutex mutex;
    std::condition_variable launchChanged;
    std::condition_variable callsEnded;
    Launch *running = nullptr; ///< The launch that has the application object and the database.
    Launch *newest = nullptr;  ///< That one, or one that waits for it to end.
    quint64 launchCount = 0;
    std::unique_ptr<Controller> cacheController; ///< The running launch's.

    /// The controller, for as long as its launch is not on its way out: a busy client must not hold up the exit.
    [[nodiscard]] Controller *availableController() const
    {
        return running != nullptr && !running->isExitRequested ? cacheController.get() : nullptr;
    }
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

/// Destroys the controller when the calls in progress have ended, unless it is that of a later launch already.
void destroyController(quint64 launchNumber)
{
    std::unique_lock lock(cache().mutex);
    const auto isRunning = [&] { return cache().running != nullptr && cache().running->number == launchNumber; };
    if (isRunning() && cache().cacheController)
        cache().cacheController->close();
    cache().callsEnded.wait(lock, [&] { return !isRunning() || cache().running->calls == 0; });
    if (!isRunning() || !cache().cacheController)
        return;
    // It counts as a call: the launch must not end before the file is closed.
    Launch &launch = *cache().running;
    ++launch.calls;
    std::unique_ptr<Controller> controller = std::move(cache().cacheController);
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

/// Asks the launch's event loop to end. The wish is an event of that loop, so that it is not lost before the loop runs.
void quit(QEventLoop &loop)
{
    QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
}

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
    QObject::connect(&foldTimer, &QTimer::timeout, [] {
        withController([](Controller &running) {
            running.foldLog();
            return Result::Success;
        });
    });

    auto controller = std::make_unique<Controller>();
    QObject::connect(&controller->database(), SIGNAL(logGrew()), &foldTimer, SLOT(start()));
    controller->connectToDatabase(QStringLiteral("CacheDb"));
    {
        const std::lock_guard lock(cache().mutex);
        if (launch.isExitRequested)
            return;
        cache().cacheController = std::move(controller);
        launch.loop = &loop;
    }
    // Also when the client has quit Qt's loops without an exit.
    const auto withdraw = qScopeGuard([&] {
        {
            const std::lock_guard lock(cache().mutex);
            launch.isExitRequested = true;
            launch.loop = nullptr;
        }
        destroyController(launch.number);
    });
    const auto start = [] {
        const std::lock_guard lock(cache().mutex);
        if (cache().cacheController)
            cache().cacheController->onStart();
    };
    QMetaObject::invokeMethod(&loop, start, Qt::QueuedConnection);
    loop.exec();
}

/// Makes it the launch that runs, after an earlier one has ended. False if there is one that is not on its way out, or
/// if an exit was asked for meanwhile.
bool enter(Launch &launch)
{
    std::unique_lock lock(cache().mutex);
    if (cache().newest != nullptr && !cache().newest->isExitRequested)
        return false;
    launch.number = ++cache().launchCount;
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
    const Controller *const controller = cache().availableController();
    return controller != nullptr ? question(*controller) : withoutCache;
}

} // namespace

CacheAccess::CacheAccess()
{
    if (isForkedOff)
        return;
    const std::lock_guard lock(cache().mutex);
    m_controller = cache().availableController();
    if (m_controller != nullptr) {
        m_launch = cache().running;
        ++m_launch->calls;
    }
}

CacheAccess::~CacheAccess()
{
    if (m_launch == nullptr)
        return;
    const std::lock_guard lock(cache().mutex);
    if (--m_launch->calls == 0 && m_launch->isExitRequested)
        cache().callsEnded.notify_all();
}

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
    quint64 runningNumber = 0;
    {
        const std::lock_guard lock(cache().mutex);
        if (Launch *const launch = cache().newest; launch != nullptr && !launch->isExitRequested) {
            launch->isExitRequested = true;
            if (launch->loop != nullptr)
                quit(*launch->loop);
            cache().launchChanged.notify_all();
        }
        if (cache().running == nullptr)
            return;
        runningNumber = cache().running->number;
    }
    destroyController(runningNumber);
}

unsigned int state()
{
    return askController(TARNEL_STATE_NONE, [](const Controller &controller) { return controller.getState(); });
}

unsigned int launchResult()
{
    return askController(TARNEL_NOT_AVAILABLE, [](const Controller &controller) {
        return static_cast<unsigned int>(controller.getConnectToDatabaseResult());
    });
}

} // namespace tarnelLib::runtime
