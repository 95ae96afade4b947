#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <memory>
#include <vector>

#include "netscan/api/NetSpace.h"

namespace quarl::netscan {

/// A street of machines on one link, each a network namespace of its own with real programs in it, and near
/// (10.88.0.1), where the search is made. Nothing leads out of it.
class Street {
 public:
  Street();
  ~Street();
  Street(const Street&) = delete;
  Street& operator=(const Street&) = delete;

  /// What this machine or user does not permit or lacks; empty when nothing.
  QString Missing() const;
  /// What did not go as it should on a machine that permits it; empty when all is well.
  const QString& Failure() const { return failure_; }

  /// A new machine at 10.88.0.<number>, to be given to the functions below.
  NetSpace& AddHost(int number);
  /// Runs a program of an installed package on a machine, in the foreground and with a /run of its own, until the
  /// street goes. The folder is one that only this program uses.
  QProcess& Start(NetSpace& host, const QString& program, const QStringList& arguments);
  QString NewFolder();

  /// Wait for a program: until it listens on a port, until it has said something, until a command on near says
  /// something.
  void AwaitPort(QProcess& program, const char* protocol, int port);
  void AwaitWords(QProcess& program, const QByteArray& words);
  void AwaitCommand(const QStringList& command, const QByteArray& words);

  NetSpace& Near() { return near_; }
  /// A copy of a program that every user may run.
  QString Install(const QString& program, const QString& name) { return InstallProgram(program, folder_.path(), name); }

 private:
  template <typename Condition>
  void Await(QProcess* program, const QString& what, Condition condition);

  QTemporaryDir folder_;
  QString missing_, failure_;
  NetSpace near_, street_;
  std::vector<std::unique_ptr<NetSpace>> hosts_;
  std::vector<std::unique_ptr<QProcess>> programs_;
  int folders_ = 0;
};

}  // namespace quarl::netscan
