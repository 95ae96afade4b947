#include "control/FakeServiceManager.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QTemporaryDir>
#include <QVariantMap>

namespace quarl::test {
namespace {

const QString kConnection = QStringLiteral("fake-service-manager");

}  // namespace

FakeServiceManager::FakeServiceManager() {
  // The bus library reads the address once a process: every daemon listens at the same one.
  static const QTemporaryDir folder;
  const QString address = QStringLiteral("unix:path=%1/bus").arg(folder.path());
  daemon_.start(QStringLiteral("dbus-daemon"),
                {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                 QStringLiteral("--address=") + address});
  if (!daemon_.waitForStarted() || !daemon_.waitForReadyRead(10'000)) return;
  qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toLatin1());
  moveToThread(&thread_);
  thread_.start();
  const auto serve = [this, address] {
    QDBusConnection bus = QDBusConnection::connectToBus(address, kConnection);
    return bus.registerVirtualObject(QStringLiteral("/org/freedesktop/systemd1"), this, QDBusConnection::SubPath) &&
           bus.registerService(QStringLiteral("org.freedesktop.systemd1"));
  };
  QMetaObject::invokeMethod(this, serve, Qt::BlockingQueuedConnection, &up_);
}

FakeServiceManager::~FakeServiceManager() {
  if (thread_.isRunning()) {
    QThread* const home = QThread::currentThread();
    const auto leave = [this, home] {
      QDBusConnection::disconnectFromBus(kConnection);
      moveToThread(home);
    };
    QMetaObject::invokeMethod(this, leave, Qt::BlockingQueuedConnection);
  }
  thread_.quit();
  thread_.wait();
  daemon_.terminate();
  daemon_.waitForFinished();
}

void FakeServiceManager::SetUnit(const QString& load, const QString& active, const QString& freezer) {
  const std::lock_guard lock(mutex_);
  load_ = load;
  active_ = active;
  freezer_ = freezer;
}

void FakeServiceManager::Refuse(bool refuse) {
  const std::lock_guard lock(mutex_);
  refuse_ = refuse;
}

void FakeServiceManager::FallSilent() {
  const std::lock_guard lock(mutex_);
  silent_ = true;
}

QStringList FakeServiceManager::Requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

bool FakeServiceManager::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  const std::lock_guard lock(mutex_);
  if (silent_) return true;
  if (message.member() == QLatin1String("LoadUnit")) {
    return connection.send(message.createReply(
        QVariant::fromValue(QDBusObjectPath(QStringLiteral("/org/freedesktop/systemd1/unit/quarld_2eservice")))));
  }
  if (message.member() == QLatin1String("GetAll")) {
    QVariantMap unit = {{QStringLiteral("LoadState"), load_}, {QStringLiteral("ActiveState"), active_}};
    if (!freezer_.isEmpty()) unit.insert(QStringLiteral("FreezerState"), freezer_);
    return connection.send(message.createReply(unit));
  }
  if (refuse_ || !message.isInteractiveAuthorizationAllowed()) {
    return connection.send(message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("Permission denied")));
  }
  QStringList words = {message.member()};
  for (const QVariant& argument : message.arguments()) words += argument.toString();
  requests_ += words.join(u' ');
  return connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(QStringLiteral("/job/1")))));
}

}  // namespace quarl::test
