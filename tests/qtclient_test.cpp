#include "client.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QStringList>
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

struct QtClient : DirectoryTest {
    int argumentCount = 0;
    QCoreApplication app{argumentCount, nullptr};
};

TEST_F(QtClient, keepsItsApplicationObjectAndItsLoop)
{
    std::atomic<bool> isLastRound = false;
    std::atomic<bool> hasQuit = false;
    std::thread worker([&] {
        for (int round = 0; round < 3; ++round) {
            const RunningCache cache;
            EXPECT_EQ(QCoreApplication::instance(), &app);
            isLastRound = round == 2;
            EXPECT_TRUE(!isLastRound || waitUntil([&] { return hasQuit.load(); }));
            EXPECT_EQ(clearAll(), TARNEL_SUCCESS) << "the client has ended only its own loop";
        }
    });
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (isLastRound)
            QCoreApplication::exit(7);
    });
    timer.start(5);
    EXPECT_EQ(QCoreApplication::exec(), 7) << "an exit has quit the client's loop";
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    hasQuit = true;
    worker.join();
    EXPECT_EQ(QCoreApplication::instance(), &app);
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
