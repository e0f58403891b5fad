#include "client.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
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
TEST(ClientProcess, keepsItsSignalHandlersMaskLocaleAndMessageHandler)
{
    const TemporaryDirectory directory;
    // What a library that takes the locale from the environment would change.
    ::setenv("LC_ALL", "C.UTF-8", 1);
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    const ::mode_t mask = ::umask(0027);
    constexpr int handled[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD, SIGXFSZ};
    for (const int number : handled)
        std::signal(number, ignoreSignal);
    const QtMessageHandler former = qInstallMessageHandler(ignoreMessage);
    {
        const RunningCache cache;
        EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
    }
    EXPECT_EQ(qInstallMessageHandler(former), ignoreMessage);
    for (const int number : handled)
        EXPECT_EQ(std::signal(number, SIG_DFL), ignoreSignal) << number;
    EXPECT_EQ(::umask(mask), 0027U);
    EXPECT_EQ(QCoreApplication::instance(), nullptr) << "the cache's own application object is left behind";
}

TEST(QtClient, keepsItsApplicationObjectAndItsLoop)
{
    const TemporaryDirectory directory;
    int argumentCount = 0;
    QCoreApplication app(argumentCount, nullptr);
    std::atomic<bool> isDone = false;
    std::thread worker([&] {
        for (int round = 0; round < 3; ++round) {
            const RunningCache cache;
            const Text request(R"({"D":{"items":[{"id":1,"iso":"en"}]}})");
            EXPECT_EQ(addLocales(request.units(), request.length()), TARNEL_SUCCESS);
            EXPECT_EQ(QCoreApplication::instance(), &app);
        }
        isDone = true;
    });
    // Only then does the client itself end its loop, from within it.
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (isDone)
            QCoreApplication::exit(7);
    });
    timer.start(5);
    QTimer::singleShot(20000, &app, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 7) << "an exit has quit the client's loop, or the cache hangs";
    worker.join();
    EXPECT_EQ(QCoreApplication::instance(), &app);
}

TEST(QtClient, mayRunAndQuitItsLoopWhileTheCacheRuns)
{
    const TemporaryDirectory directory;
    int argumentCount = 0;
    QCoreApplication app(argumentCount, nullptr);
    const RunningCache cache;
    QTimer::singleShot(50, &app, &QCoreApplication::quit);
    EXPECT_EQ(QCoreApplication::exec(), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(getState(), TARNEL_STATE_RUNNING);
}

/// A client with one thread only gives that one to the cache, and exits it from its own slots.
TEST(QtClient, mayLaunchOnItsMainThreadAndExitFromASlot)
{
    const TemporaryDirectory directory;
    int argumentCount = 0;
    QCoreApplication app(argumentCount, nullptr);
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
