#include "Tolvane/session/Log.h"

#include "TolvaneCore/LogLine.h"
#include "platform/SystemLog.h"
#include "platform/linux/UserFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <chrono>

namespace tolvane::Log {

namespace {

platform::SystemLog* systemLogSink = nullptr;

// Made once: the folder is created on the first use only, and if that fails the file
// writes fail quietly from then on.
const QString& logFile() {
    static const QString path = [] {
        QString file = QString::fromStdString(oslinux::logFile());
        QDir().mkpath(QFileInfo(file).path());
        return file;
    }();
    return path;
}

void appendToFile(const std::string& text) {
    QFile file(logFile());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        return;
    }
    file.write(text.data(), qint64(text.size()));
    file.close();
}

} // namespace

void setSystemLog(platform::SystemLog* systemLog) {
    systemLogSink = systemLog;
}

std::string filePath() {
    return logFile().toStdString();
}

void line(const std::string& message) {
    const auto now = std::chrono::system_clock::now();
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch()).count();
    appendToFile(logFileLine(seconds, message));
    if (systemLogSink) {
        systemLogSink->write(systemLogEntry(message));
    }
}

} // namespace tolvane::Log
