#pragma once

#include <string>

#include "HostChannel.h"
#include "quarl_module.h"

namespace quarl::host {

/// What the process offers to modules: log lines, and dialogs, which come from the library quarl-forms.so beside the
/// program and are loaded with the first one. There is one in a process, alive until its end.
class DialogHost {
 public:
  /// @param folder of the program, native
  DialogHost(HostChannel& channel, std::string folder);

  /// Without dialogs: only the log works.
  const QuarlHost& Plain() const { return plain_; }
  /// With dialogs over the request's window. The request must live as long as its call.
  const QuarlHost& For(const plugins::HostRequest& request);
  /// Why a dialog could not be shown in the call of For()'s request; "" when none failed.
  const std::string& Failure() const { return failure_; }

  /// For the functions that modules call.
  int16_t ShowForm(const char* form, QuarlBuffer values, const QuarlFormCalls* calls);
  int16_t ShowText(const char* title, const char* text);
  void Tell(plugins::HostWord word);
  void Log(int16_t severity, const char* line);

 private:
  template <typename Member, typename... Arguments>
  int16_t Show(Member QuarlHost::*member, const char* name, Arguments... arguments);
  bool LoadForms();

  HostChannel& channel_;
  std::string folder_;
  QuarlHost plain_;
  QuarlHost full_;
  QuarlHost forms_;
  const plugins::HostRequest* request_ = nullptr;
  bool loaded_ = false;
  std::string failure_;
};

}  // namespace quarl::host
