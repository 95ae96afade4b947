#pragma once

#include <nlohmann/json.hpp>

#include <QProcess>
#include <QStringList>
#include <string>

#include "quarl_module.h"

namespace quarl::testing {

inline QString S(const char* text) {
  return QString::fromUtf8(text);
}

inline bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// A receiver in a process of its own, a script of this folder: it prints the number of the port on which it listens,
/// then a line of JSON for each thing that it received.
class Peer {
 public:
  Peer(const QString& script, const QStringList& arguments);
  ~Peer();
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  int Port() const { return port_; }
  /// The next thing received; fails the test and is null when none comes.
  nlohmann::json Next();
  /// How many more lines have come. Ends the receiver.
  int CountRest();

 private:
  QByteArray Line();

  QProcess process_;
  int port_ = 0;
};

/// A problem with a value for every fact.
QuarlEvent ProblemEvent();

}  // namespace quarl::testing
