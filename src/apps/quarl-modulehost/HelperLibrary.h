#pragma once

#include <stdexcept>
#include <string>

#include "plugins/contract/HostProtocol.h"
#include "quarl_helper.h"

namespace quarl::host {

/// A module could not be called; what() is one sentence.
class CallError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// TestHelper.dll or AlertHelper.dll, loaded. Any thread may call.
class HelperLibrary {
 public:
  /// @param folder of the program, native. @param host what modules get, alive until the process ends.
  /// Throws CallError.
  HelperLibrary(const std::string& folder, ModuleKind kind, const QuarlHost& host);

  /// Calls one operation; throws CallError when it did not reach the module.
  template <typename Function, typename... Arguments>
  int16_t Call(const char* name, Arguments... arguments) const {
    const int16_t result = Find<Function>(name)(arguments...);
    const char* const failure = failure_();
    if (failure[0] != '\0') throw CallError(failure);
    return result;
  }
  /// An operation to be called without Call(); throws CallError when there is none. Failure() tells afterwards why it
  /// did not reach the module, "" when it did.
  template <typename Function>
  Function Find(const char* name) const {
    return reinterpret_cast<Function>(Symbol(name));
  }
  const char* Failure() const { return failure_(); }

 private:
  void* Symbol(const char* name) const;

  std::string file_;
  void* library_ = nullptr;
  decltype(&HelperFailure) failure_ = nullptr;
};

}  // namespace quarl::host
