#pragma once

#include <QString>
#include <chrono>
#include <string>

#include "plugins/contract/HostProcess.h"
#include "plugins/contract/HostProtocol.h"
#include "plugins/contract/ModuleOutput.h"

namespace quarl::plugins {

/// One call of a module, under way in a host process of its own. Its owner waits until Descriptor() is readable, in
/// whatever way suits it, calls Advance(), and so on until Done(). One thread.
class HostCall {
 public:
  /// Starts the process. @param module file name, for sentences. @param limit how long the module may take while no
  /// dialog of it is up. Throws ModuleError.
  HostCall(const QString& program, const HostRequest& request, QString module, std::chrono::milliseconds limit);
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;

  int Descriptor() const { return watch_.Get(); }
  /// Takes what has come. Never waits.
  void Advance();
  bool Done() const { return done_; }
  /// A dialog of the module is on the screen; no limit runs.
  bool DialogUp() const { return dialogUp_; }
  const QString& Module() const { return module_; }
  /// Kills the process; the call is done and has failed.
  void Cancel();
  /// The module's answer. Throws ModuleError when there is none.
  HostReply Result() const;

 private:
  void Watch(int descriptor, unsigned events) const;
  void StartLimit(bool running) const;
  void SendRest();
  void Receive();
  void Take(const HostReply& reply);
  void TakeEnd();
  bool LimitIsOver() const;
  void Fail(const QString& sentence);

  QString module_, path_;
  std::chrono::milliseconds limit_;
  std::uint32_t id_;
  HostProcess process_;
  quarl::Descriptor watch_, timer_;
  ModuleOutput output_;
  std::string outgoing_;
  FrameBuffer frames_;
  bool dialogUp_ = false, done_ = false, outputOpen_ = true;
  HostReply reply_;
  QString failure_;
};

}  // namespace quarl::plugins
