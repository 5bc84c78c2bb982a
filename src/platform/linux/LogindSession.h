#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>

namespace tolvane::oslinux {

// The Active property of this login session at logind (org.freedesktop.login1.Session), which
// turns false when another user's session takes over the seat and true when this one comes
// back. Where there is no system bus or no session, it reports nothing.
class LogindSession : public QObject {
    Q_OBJECT

public:
    explicit LogindSession(std::function<void(bool active)> onChange);

private slots:
    void propertiesChanged(const QString& interface, const QVariantMap& changed,
                           const QStringList& invalidated);

private:
    void follow(const QString& sessionPath);
    void askActive();

    std::function<void(bool)> onChange;
    QString path;
};

} // namespace tolvane::oslinux
