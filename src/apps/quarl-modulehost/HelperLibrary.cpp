#include "HelperLibrary.h"

#include <dlfcn.h>

namespace quarl::host {

HelperLibrary::HelperLibrary(const std::string& folder, ModuleKind kind, const QuarlHost& host)
    : file_(kind == ModuleKind::Alert ? "AlertHelper.dll" : "TestHelper.dll") {
  library_ = dlopen((folder + '/' + file_).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (library_ == nullptr) {
    const char* const reason = dlerror();
    throw CallError("The library " + file_ + " cannot be loaded: " + (reason != nullptr ? reason : "no reason") + ".");
  }
  failure_ = reinterpret_cast<decltype(&HelperFailure)>(Symbol("HelperFailure"));
  reinterpret_cast<decltype(&HelperStart)>(Symbol("HelperStart"))(&host);
}

void* HelperLibrary::Symbol(const char* name) const {
  void* const symbol = dlsym(library_, name);
  if (symbol == nullptr) throw CallError("The library " + file_ + " lacks the function " + name + ".");
  return symbol;
}

}  // namespace quarl::host
