#include "Tolvane/Log.h"

#include "TolvaneCore/LogLine.h"
#include "platform/SystemLog.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <chrono>

namespace tolvane::Log {

namespace {

platform::SystemLog* systemLogSink = nullptr;

QString stateHome() {
    QString fromEnvironment = qEnvironmentVariable("XDG_STATE_HOME");
    if (QDir::isAbsolutePath(fromEnvironment)) {
        return fromEnvironment;
    }
    return QDir::homePath() + QStringLiteral("/.local/state");
}

// Made once: the folder is created on the first use only, and if that fails the file
// writes fail quietly from then on.
const QString& logFile() {
    static const QString path = [] {
        const QString folder = stateHome() + QStringLiteral("/Tolvane");
        QDir().mkpath(folder);
        return folder + QStringLiteral("/Tolvane.log");
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
