#include "Tolvane/session/Log.h"

#include "TolvaneCore/LogLine.h"
#include "platform/SystemLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <chrono>

namespace tolvane::Log {

namespace {

platform::SystemLog* systemLogSink = nullptr;
QString logFile;
bool folderMade = false;

// The folder is made on the first line only; if that fails, the file writes fail quietly.
void appendToFile(const std::string& text) {
    if (logFile.isEmpty()) {
        return;
    }
    if (!folderMade) {
        QDir().mkpath(QFileInfo(logFile).path());
        folderMade = true;
    }
    QFile file(logFile);
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

void setFile(const std::string& path) {
    logFile = QString::fromStdString(path);
    folderMade = false;
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
