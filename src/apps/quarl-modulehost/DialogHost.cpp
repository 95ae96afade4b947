#include "DialogHost.h"

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace quarl::host {
namespace {

using plugins::HostReply;
using plugins::HostWord;

constexpr int16_t kNotShown = -1;
constexpr std::size_t kLongestLine = 4096;
constexpr char kLibrary[] = "quarl-forms.so";

using FormsOpen = int16_t (*)(QuarlHost* host, uint64_t ownerWindow, const char* applicationTitle);

DialogHost* theHost = nullptr;

bool IsMainThread() {
  return syscall(SYS_gettid) == getpid();
}

int16_t ShowFormOfHost(const char* form, QuarlBuffer values, const QuarlFormCalls* calls) {
  return IsMainThread() ? theHost->ShowForm(form, values, calls) : kNotShown;
}

int16_t ShowTextOfHost(const char* title, const char* text) {
  return IsMainThread() ? theHost->ShowText(title, text) : kNotShown;
}

void LogOfHost(int16_t severity, const char* line) {
  theHost->Log(severity, line);
}

void OwnWindowsOfHost(int16_t shown) {
  if (IsMainThread()) theHost->Tell(shown != 0 ? HostWord::DialogOpened : HostWord::DialogClosed);
}

}  // namespace

DialogHost::DialogHost(HostChannel& channel, std::string folder)
    : channel_(channel),
      folder_(std::move(folder)),
      plain_{sizeof(QuarlHost), nullptr, nullptr, LogOfHost, nullptr, 0},
      full_{sizeof(QuarlHost), ShowFormOfHost, ShowTextOfHost, LogOfHost, OwnWindowsOfHost, 0},
      forms_{sizeof(QuarlHost), nullptr, nullptr, LogOfHost, nullptr, 0} {
  theHost = this;
}

const QuarlHost& DialogHost::For(const plugins::HostRequest& request) {
  request_ = &request;
  full_.ownerWindow = request.ownerWindow;
  return full_;
}

int16_t DialogHost::ShowForm(const char* form, QuarlBuffer values, const QuarlFormCalls* calls) {
  return Show(&QuarlHost::ShowForm, "ShowForm", form, values, calls);
}

int16_t DialogHost::ShowText(const char* title, const char* text) {
  return Show(&QuarlHost::ShowText, "ShowText", title, text);
}

template <typename Member, typename... Arguments>
int16_t DialogHost::Show(Member QuarlHost::*member, const char* name, Arguments... arguments) {
  if (!LoadForms()) return kNotShown;
  if (forms_.*member == nullptr) {
    failure_ = std::string("The library ") + kLibrary + " lacks " + name + ".";
    return kNotShown;
  }
  Tell(HostWord::DialogOpened);
  const int16_t result = (forms_.*member)(arguments...);
  Tell(HostWord::DialogClosed);
  return result;
}

bool DialogHost::LoadForms() {
  if (loaded_) return true;
  const std::string path = folder_ + '/' + kLibrary;
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  const auto open = library != nullptr ? reinterpret_cast<FormsOpen>(dlsym(library, "QuarlFormsOpen")) : nullptr;
  if (open == nullptr) {
    const char* const reason = dlerror();
    failure_ =
        std::string("The dialog of the module cannot be shown: ") + (reason != nullptr ? reason : kLibrary) + ".";
    return false;
  }
  forms_.ownerWindow = request_->ownerWindow;
  const int result = open(&forms_, request_->ownerWindow, request_->applicationTitle.c_str());
  loaded_ = result == 0;
  if (!loaded_) {
    failure_ = std::string("The dialog of the module cannot be shown: ") + kLibrary + " could not start (result " +
               std::to_string(result) + ").";
  }
  return loaded_;
}

void DialogHost::Tell(HostWord word) {
  HostReply notice;
  notice.id = request_ != nullptr ? request_->id : 0;
  notice.word = word;
  channel_.Send(notice);
}

void DialogHost::Log(int16_t severity, const char* line) {
  if (line == nullptr) return;
  HostReply notice;
  notice.word = HostWord::LogLine;
  notice.result = std::clamp<int16_t>(severity, 1, 3);
  notice.texts = {std::string(line, strnlen(line, kLongestLine))};
  channel_.Send(notice);
}

}  // namespace quarl::host
