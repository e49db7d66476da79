// SPDX-License-Identifier: MIT
#include <memory>
#include <string>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServer>
#include <QDBusVirtualObject>
#include <QThread>
#include <gmock/gmock.h>

#include "QtTest.h"
#include "base/Failure.h"
#include "platform/logind/LogindPower.h"
#include "tests/support/TempFolder.h"

namespace korval::platform {
namespace {

using host::PowerPlatform;
using testing::HasSubstr;

/// Plays the power service for one peer, and keeps the last call.
class FakeService : public QDBusVirtualObject {
 public:
  QString refusal;
  QString last_call;

  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    last_call = message.path() + " " + message.interface() + "." + message.member() + " " +
                message.signature() + (message.arguments().value(0).toBool() ? " true" : " false");
    connection.send(refusal.isEmpty() ? message.createReply()
                                      : message.createErrorReply(QDBusError::AccessDenied, refusal));
    return true;
  }
};

/// The service on a socket of its own, far from the system's bus. It answers from a thread of its own, for
/// the caller blocks.
class LogindPowerTest : public QtTest {
 protected:
  LogindPowerTest() {
    server_.setAnonymousAuthenticationAllowed(true);
    QObject::connect(
        &server_, &QDBusServer::newConnection, &server_,
        [this](QDBusConnection connection) {
          connection.registerVirtualObject("/org/freedesktop/login1", &service_, QDBusConnection::SingleNode);
        },
        Qt::DirectConnection);
    service_.moveToThread(&thread_);
    server_.moveToThread(&thread_);
    thread_.start();
  }
  void TearDown() override {
    QDBusConnection::disconnectFromPeer("private");
    thread_.quit();
    thread_.wait();
  }

  QDBusConnection Connect() { return QDBusConnection::connectToPeer(server_.address(), "private"); }

  tests::TempFolder folder_;
  QThread thread_;
  FakeService service_;
  QDBusServer server_{QString::fromStdString("unix:path=" + folder_.Path("bus"))};
};

TEST_F(LogindPowerTest, AsksTheServiceToRestart) {
  LogindPower([this] {
    return Connect();
  }).ExitWindows(PowerPlatform::kReboot | PowerPlatform::kForce, 0xFFFFFFFF);
  EXPECT_EQ(service_.last_call.toStdString(),
            "/org/freedesktop/login1 org.freedesktop.login1.Manager.Reboot b false");
}

TEST_F(LogindPowerTest, AsksTheServiceToPowerOff) {
  LogindPower([this] {
    return Connect();
  }).ExitWindows(PowerPlatform::kShutdown | PowerPlatform::kForce, 0xFFFFFFFF);
  EXPECT_EQ(service_.last_call.toStdString(),
            "/org/freedesktop/login1 org.freedesktop.login1.Manager.PowerOff b false");
}

TEST_F(LogindPowerTest, RaisesTheServicesOwnWordsWhenItRefuses) {
  service_.refusal = "Interactive authentication required.";
  LogindPower power([this] { return Connect(); });
  try {
    power.ExitWindows(PowerPlatform::kReboot | PowerPlatform::kForce, 0xFFFFFFFF);
    FAIL() << "a refusal is a failure";
  } catch (const base::Failure& failure) {
    EXPECT_THAT(failure.Description(),
                HasSubstr("does not restart the computer: Interactive authentication required."));
  }
}

TEST_F(LogindPowerTest, RaisesAFailureWhenThereIsNoBus) {
  LogindPower power([] { return QDBusConnection("a bus that nobody opened"); });
  EXPECT_THROW(power.ExitWindows(PowerPlatform::kShutdown, 0), base::Failure);
}

TEST_F(LogindPowerTest, IsNotOfTheNtFamily) {
  LogindPower power([]() -> QDBusConnection { throw base::Failure("not to be asked"); });
  host::OsVersion version;
  EXPECT_TRUE(power.GetVersion(version));
  EXPECT_NE(version.platform, host::OsVersion::kNtFamily);
}

}  // namespace
}  // namespace korval::platform
