#pragma once

#include <QStringList>

#include "support/Text.h"

namespace quarl::netscan {

enum class TestUser { Root, Nobody, NobodyConfined };

/// Makes the calling process this user's; ends the process when that fails. For a child before it runs a program.
void BecomeUser(TestUser user);

/// A copy of a program in the folder, which every user may run.
QString InstallProgram(const QString& program, const QString& folder, const QString& name);

/// Gives a program cap_net_raw. Returns why it cannot have it, or nothing.
QString GiveCapability(const QString& program);

/// A network namespace of the test's own, which nobody else can name. It goes with this object and the programs in it.
class NetSpace {
 public:
  NetSpace();
  ~NetSpace();
  NetSpace(const NetSpace&) = delete;
  NetSpace& operator=(const NetSpace&) = delete;

  /// Why it does not work; empty while all is well. The first reason stays.
  const QString& Missing() const { return missing_; }
  /// Takes the calling thread there.
  void Enter() const;
  /// A name by which `ip` on this machine finds the namespace.
  QByteArray Path() const;
  /// Commands of `ip -batch`.
  void Batch(const QByteArray& commands);
  struct Outcome {
    int exitCode = -1;
    QStringList output;  ///< lines of the standard output
    QString errors;
  };
  /// Runs a program there to its end.
  Outcome Run(TestUser user, const QString& program, const QStringList& arguments, const QByteArray& input = {}) const;
  /// The value of a file below /proc/sys/net/ipv4.
  void Set(const char* name, const char* value);

 private:
  QString missing_;
  int descriptor_ = -1;
};

}  // namespace quarl::netscan
