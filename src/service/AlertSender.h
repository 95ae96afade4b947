#pragma once

#include <QString>
#include <functional>

namespace quarl::service {

/// One message for one alert, to be handed to the alert's module.
struct AlertJob {
  qint64 idMessage = 0;
  QString module;  ///< file name in the folder of alert modules; comes from the store, so it may be anything
  QString serverName;
  QString serverAddress;
  QString subject;        ///< one line
  QString text;           ///< lines that end in "\n"
  QString thread;         ///< the same for all messages about one outage; letters, digits, '-', '.'
  bool recovery = false;  ///< tells the end of an outage
  QString groupName;      ///< "" for none
  QString testName;       ///< "" when the message is not about a single test
  QString resultText;
  qint64 timeMs = 0;   ///< of the change
  qint64 sinceMs = 0;  ///< beginning of the outage
  QString properties;
  int timeLimitMs = 0;
};

struct AlertOutcome {
  bool delivered = false;
  QString reason;  ///< why not, one line
};

/// Hands messages to alert modules outside this program. Everything happens on the thread of the service, and nothing
/// here waits.
class AlertSender {
 public:
  using Done = std::function<void(const AlertOutcome&)>;

  virtual ~AlertSender() = default;
  /// done is called exactly once, at the latest a second after the time limit, and from the event loop, never from
  /// within Send(). The service has a bounded number of messages on their way.
  virtual void Send(const AlertJob& job, Done done) = 0;
  /// Ends what is on its way; outcomes are not told any more.
  virtual void Abort() = 0;
};

}  // namespace quarl::service
