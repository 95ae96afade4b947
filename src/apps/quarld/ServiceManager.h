#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QtGlobal>

namespace quarl::daemon {

/// What the service tells the service manager that started it; nothing when none did.
class ServiceManager {
 public:
  ServiceManager();

  void Ready() const;
  /// One line for "systemctl status".
  void Status(const QString& line);
  void Stopping() const;
  /// A sign of life, at most every third of the watchdog's time.
  void Alive();

 private:
  qint64 aliveEveryMs_ = 0;  ///< 0: no watchdog
  QElapsedTimer sinceAlive_;
  QString status_;
};

}  // namespace quarl::daemon
