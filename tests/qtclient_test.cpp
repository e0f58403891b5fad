#include "client.h"

#include <tarnel/diagnostics.h>

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QSqlDatabase>
#include <QStringList>
#include <QThread>
#include <QTimer>
#include <sys/stat.h>

#include <atomic>
#include <clocale>
#include <csignal>

namespace client {

namespace {

void ignoreMessage(QtMsgType, const QMessageLogContext &, const QString &) {}

void ignoreSignal(int) {}

} // namespace

/// What belongs to the whole process, and thus to the client.
using ClientProcess = DirectoryTest;

TEST_F(ClientProcess, keepsItsSignalHandlersLocaleMaskAndMessageHandler)
{
    // What a library that takes the locale from the environment would change.
    ::setenv("LC_ALL", "C.UTF-8", 1);
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    constexpr int handled[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD, SIGXFSZ};
    for (const int number : handled)
        std::signal(number, ignoreSignal);
    qInstallMessageHandler(ignoreMessage);
    const mode_t mask = ::umask(0);
    {
        const RunningCache cache;
        EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
        EXPECT_EQ(QSqlDatabase::connectionNames(), QStringList("")) << "as its clients have been told";
    }
    ASSERT_EQ(std::system("echo garbage >CacheDb"), 0);
    {
        const RunningCache cache;
        EXPECT_TRUE(QSqlDatabase::contains("CacheDb")) << "when it is made anew";
    }
    EXPECT_EQ(::umask(mask), 0U);
    EXPECT_EQ(qInstallMessageHandler(nullptr), ignoreMessage);
    for (const int number : handled)
        EXPECT_EQ(std::signal(number, SIG_DFL), ignoreSignal) << number;
    EXPECT_EQ(QCoreApplication::instance(), nullptr) << "the cache's own application object is left behind";
}

/// The launching thread's loop is one as Qt describes it.
TEST_F(ClientProcess, mayHaveTimersOnTheLaunchingThread)
{
    const RunningCache cache;
    const auto useLoop = [] {
        QAbstractEventDispatcher &loop = *QAbstractEventDispatcher::instance();
        const QSocketNotifier ignored(0, QSocketNotifier::Read);
        QTimer timers[2];
        for (QTimer &timer : timers) {
            QObject::connect(&timer, &QTimer::timeout, [&] { timers[&timer == timers].stop(); });
            timer.start(0);
        }
        loop.processEvents(QEventLoop::AllEvents);
        EXPECT_NE(timers[0].isActive(), timers[1].isActive()) << "the first has stopped the other in time";
        timers[0].start(60000);
        timers[1].start(5);
        while (timers[0].isActive())
            loop.processEvents(QEventLoop::WaitForMoreEvents);
        timers[0].start(60000);
        timers[1].stop();
        EXPECT_FALSE(loop.processEvents(QEventLoop::AllEvents)) << "there is nothing to wait for";
        EXPECT_GT(timers[0].remainingTime(), 50000);
        EXPECT_EQ(loop.registeredTimers(timers).size(), 1);
        EXPECT_TRUE(loop.unregisterTimers(timers));
        EXPECT_EQ(timers[0].remainingTime(), -1);
        loop.flush();
        loop.wakeUp();
        EXPECT_TRUE(loop.hasPendingEvents());
    };
    QMetaObject::invokeMethod(QCoreApplication::instance(), useLoop, Qt::BlockingQueuedConnection);
}

struct QtClient : DirectoryTest {
    int argumentCount = 0;
    QCoreApplication app{argumentCount, nullptr};
};

/// Whether its loop runs or not.
TEST_F(QtClient, keepsItsApplicationObjectItsTimersAndItsLoop)
{
    std::atomic<bool> isLastRound = false;
    std::atomic<bool> hasQuit = false;
    int ticks = 0;
    int quits = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        EXPECT_EQ(QThread::currentThread(), app.thread());
        ++ticks;
        if (isLastRound)
            QCoreApplication::exit(7);
    });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, [&] { ++quits; });
    timer.start(5);
    for (int round = 0; round < 2; ++round) {
        const RunningCache cache;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(ticks, 0) << "its loop has not begun";
    std::thread worker([&] {
        for (int round = 0; round < 3; ++round) {
            const RunningCache cache;
            EXPECT_EQ(QCoreApplication::instance(), &app);
            isLastRound = round == 2;
            EXPECT_TRUE(!isLastRound || waitUntil([&] { return hasQuit.load(); }));
            EXPECT_EQ(clearAll(), TARNEL_SUCCESS) << "the client has ended only its own loop";
        }
    });
    EXPECT_EQ(QCoreApplication::exec(), 7) << "an exit has quit the client's loop";
    EXPECT_EQ(quits, 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    hasQuit = true;
    worker.join();
    EXPECT_EQ(QCoreApplication::instance(), &app);
}

/// As one that is shipped without Qt's plugins.
TEST_F(QtClient, learnsThatItHasNoDriverForSqlite)
{
    QCoreApplication::setLibraryPaths({});
    std::jthread launched(launchCache);
    EXPECT_TRUE(waitUntil([] { return getState() == TARNEL_STATE_RUNNING; }));
    EXPECT_EQ(getLaunchCacheResult(), TARNEL_DATABASE_UNAVAILABLE);
    EXPECT_STREQ(tarnelReason(), "getLaunchCacheResult: No database: Qt has no driver for SQLite, QSQLITE");
    EXPECT_FALSE(std::filesystem::exists("CacheDb"));
    exitCache();
}

/// A client with one thread only gives that one to the cache, and exits it from its own slots.
TEST_F(QtClient, mayLaunchOnItsMainThreadAndExitFromASlot)
{
    unsigned int state = TARNEL_STATE_NONE;
    QTimer::singleShot(100, &app, [&] {
        state = getState();
        exitCache();
    });
    launchCache();
    EXPECT_EQ(state, TARNEL_STATE_RUNNING);
    QTimer::singleShot(0, &app, &QCoreApplication::quit);
    EXPECT_EQ(QCoreApplication::exec(), 0);
}

} // namespace client
