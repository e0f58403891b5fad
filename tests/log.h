#pragma once

#include <QString>

#include <mutex>
#include <string>
#include <vector>

namespace client {

/// Keeps the lines of Qt's debug log for as long as it lives, instead of their being printed.
class Log
{
public:
    Log()
    {
        lines().clear();
        m_former = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &line) {
            if (type != QtDebugMsg)
                return;
            const std::lock_guard lock(mutex());
            lines().push_back(line.toStdString());
        });
    }
    Log(const Log &) = delete;
    Log &operator=(const Log &) = delete;
    ~Log() { qInstallMessageHandler(m_former); }

    /// The lines since the last call.
    std::vector<std::string> take()
    {
        const std::lock_guard lock(mutex());
        return std::exchange(lines(), {});
    }

private:
    static std::mutex &mutex()
    {
        static std::mutex instance;
        return instance;
    }
    static std::vector<std::string> &lines()
    {
        static std::vector<std::string> instance;
        return instance;
    }

    QtMessageHandler m_former;
};

} // namespace client
