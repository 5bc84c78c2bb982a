#include "platform/linux/InputServiceClient.h"
#include "Tolvane/scroll/ScrollInverter.h"
#include "support/FakePlatform.h" // Lines

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMap>
#include <QMutex>
#include <QProcess>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <algorithm>

namespace tolvane::testing {
namespace {

const QString serviceName = QStringLiteral("org.tolvane.Input1");
const QString notAuthorized = QStringLiteral("org.tolvane.Input1.Error.NotAuthorized");

// The service's object, answering on a thread of its own: the client's waiting calls do not
// turn the test's event loop. Calls are recorded as "Member arguments".
class FakeInputService final : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        QMutexLocker lock(&mutex);
        QStringList call{message.member()};
        for (const QVariant& argument : message.arguments()) {
            call << argument.toString();
        }
        calls.push_back(call.join(' ').toStdString());
        const QString error = errors.value(message.member(), errors.value(QString()));
        bus.send(error.isEmpty() ? message.createReply()
                                 : message.createErrorReply(error, QStringLiteral("refused")));
        return true;
    }

    // Answers `member` (every member when empty) with `error` from now on; none: answers.
    void refuse(const QString& member, const QString& error) {
        QMutexLocker lock(&mutex);
        errors[member] = error;
    }
    Lines journal() {
        QMutexLocker lock(&mutex);
        return calls;
    }

private:
    QMutex mutex;
    QMap<QString, QString> errors;
    Lines calls;
};

// A bus of the test's own, the service registered on one connection and the client on another.
class InputServiceClientTest : public ::testing::Test {
protected:
    void SetUp() override {
        daemon.start(QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--print-address"});
        ASSERT_TRUE(daemon.waitForReadyRead(5000)) << "dbus-daemon did not start";
        const QString address = QString::fromUtf8(daemon.readLine().trimmed());
        serviceBus = QDBusConnection::connectToBus(address, QStringLiteral("service"));
        clientBus = QDBusConnection::connectToBus(address, QStringLiteral("client"));
        thread.start();
        service.moveToThread(&thread);
        ASSERT_TRUE(
            serviceBus.registerVirtualObject(QStringLiteral("/org/tolvane/Input1"), &service));
        ASSERT_TRUE(serviceBus.registerService(serviceName));
    }
    void TearDown() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));
        QDBusConnection::disconnectFromBus(QStringLiteral("service"));
        thread.quit();
        thread.wait();
    }

    QProcess daemon; // ended with the test
    QThread thread;
    FakeInputService service;
    QDBusConnection serviceBus{QString()}, clientBus{QString()};
};

// A hold refused, or answered too late, is let go of at once.
TEST_F(InputServiceClientTest, AbsentOrRefusingServiceGivesNoTrustNoTapAndNoHold) {
    const struct {
        const char* what;
        QString member, error; // the refusal
        bool registered, trusted, tapped;
    } rows[] = {
        {"absent", {}, {}, false, false, false},
        {"not authorised", {}, notAuthorized, true, false, false},
        {"no keyboard", "HoldKeyboards", "org.tolvane.Input1.Error.NoKeyboard", true, true, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        service.refuse(row.member, row.error);
        if (!row.registered) {
            serviceBus.unregisterService(serviceName);
        }
        oslinux::InputServiceClient client(clientBus);
        ScrollInverter inverter(client);
        EXPECT_EQ(client.isTrusted(), row.trusted);
        EXPECT_EQ(inverter.start(), row.tapped);
        EXPECT_FALSE(client.grab());
        const auto released = [&] { return service.journal().back() == "ReleaseKeyboards"; };
        EXPECT_TRUE(!row.registered || QTest::qWaitFor(released, 2000)) << "a late hold stands";
        serviceBus.registerService(serviceName);
        service.refuse(row.member, {});
    }
}

// The setting written before the service accepts the tap is the tap's first; each later one,
// and a service that starts anew, gets the current one. Keep-alives come only while held.
TEST_F(InputServiceClientTest, InversionReachesTheServiceAndKeepAlivesLastAsLongAsTheHold) {
    service.refuse({}, notAuthorized);
    oslinux::InputServiceClient client(clientBus);
    ScrollInverter inverter(client);
    inverter.inverting = true;
    EXPECT_FALSE(inverter.start());
    service.refuse({}, {});
    EXPECT_TRUE(inverter.start());
    inverter.inverting = false;

    ASSERT_TRUE(client.grab());
    const auto keepAlives = [&] { return std::ranges::count(service.journal(), "KeepAlive"); };
    EXPECT_TRUE(QTest::qWaitFor([&] { return keepAlives() >= 2; }, 3000));
    client.release();
    EXPECT_TRUE(QTest::qWaitFor([&] { return service.journal().back() == "ReleaseKeyboards"; }));
    const auto held = keepAlives();
    EXPECT_FALSE(QTest::qWaitFor([&] { return keepAlives() > held; }, 1200));

    serviceBus.unregisterService(serviceName);
    serviceBus.registerService(serviceName);
    EXPECT_TRUE(QTest::qWaitFor([&] { return service.journal().back() == "SetInversion false"; }));
    Lines calls = service.journal();
    std::erase(calls, "KeepAlive");
    EXPECT_EQ(calls, (Lines{"SetInversion true", "SetInversion true", "SetInversion false",
                            "HoldKeyboards", "ReleaseKeyboards", "SetInversion false"}));
}

} // namespace
} // namespace tolvane::testing
