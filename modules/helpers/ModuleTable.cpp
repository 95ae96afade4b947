#include "ModuleTable.h"

#include <dlfcn.h>

#include <cstring>

namespace quarl::helpers {
namespace {

constexpr QuarlHost kNothingToShow = {sizeof(QuarlHost), nullptr, nullptr, nullptr, nullptr, 0};

const char* KindWords(int16_t kind) {
  if (kind == QUARL_MODULE_TEST) return "a test module";
  if (kind == QUARL_MODULE_ALERT) return "an alert module";
  return "a module of an unknown kind";
}

std::string PathOf(const QuarlBuffer& path) {
  std::string text(path.text, strnlen(path.text, path.size));
  if (text.empty() || text.front() != '/') throw HelperError("\"" + text + "\" is not the path of a module.");
  return text;
}

}  // namespace

Module::Module(const std::string& path, int16_t kind, const QuarlHost* host)
    : name_(path.substr(path.rfind('/') + 1)), library_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
  if (library_ == nullptr) {
    const char* const reason = dlerror();
    throw HelperError("The module " + name_ + " cannot be loaded: " + (reason != nullptr ? reason : "no reason") + ".");
  }
  CheckInterface();
  CheckKind(kind);
  Start(host != nullptr ? host : &kNothingToShow);
}

void* Module::Symbol(const char* name) const {
  return dlsym(library_, name);
}

void Module::CheckInterface() const {
  const auto abi = Find<decltype(&QuarlModuleAbi)>("QuarlModuleAbi");
  if (abi == nullptr) {
    throw HelperError("The file " + name_ + " is no Quarl module: it lacks the function QuarlModuleAbi.");
  }
  const int number = abi();
  if (number == QUARL_MODULE_ABI) return;
  throw HelperError("The module " + name_ + " was built for interface number " + std::to_string(number) +
                    "; this installation calls number " + std::to_string(QUARL_MODULE_ABI) + ".");
}

void Module::CheckKind(int16_t kind) const {
  const int16_t own = Get<decltype(&QuarlModuleKind)>("QuarlModuleKind")();
  if (own == kind) return;
  throw HelperError("The module " + name_ + " is " + KindWords(own) + ", but " + KindWords(kind) + " is wanted.");
}

void Module::Start(const QuarlHost* host) const {
  const auto start = Find<decltype(&QuarlModuleStart)>("QuarlModuleStart");
  if (start == nullptr) return;
  const int result = start(host);
  if (result == 0) return;
  throw HelperError("The module " + name_ + " could not start (result " + std::to_string(result) + ").");
}

void ModuleTable::SetHost(const QuarlHost* host) {
  const std::lock_guard lock(mutex_);
  host_ = host;
}

const Module& ModuleTable::At(const QuarlBuffer& path) {
  const std::string text = PathOf(path);
  std::unique_lock lock(mutex_);
  Entry& entry = entries_[text];
  const QuarlHost* const host = host_;
  lock.unlock();
  const std::lock_guard loading(entry.loading);
  if (!entry.module) entry.module = std::make_unique<const Module>(text, kind_, host);
  return *entry.module;
}

}  // namespace quarl::helpers
