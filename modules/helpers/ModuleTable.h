#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

#include "quarl_module.h"

namespace quarl::helpers {

/// A module could not be called; what() is one sentence.
class HelperError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A module that was loaded, has the right interface number and kind, and has started. Never unloaded.
class Module {
 public:
  /// Throws HelperError.
  Module(const std::string& path, int16_t kind, const QuarlHost* host);

  /// A function of the module; null when it has none of this name.
  template <typename Function>
  Function Find(const char* name) const {
    return reinterpret_cast<Function>(Symbol(name));
  }
  /// The same; throws HelperError when there is none.
  template <typename Function>
  Function Get(const char* name) const {
    void* const symbol = Symbol(name);
    if (symbol == nullptr) throw HelperError("The module " + name_ + " lacks the function " + name + ".");
    return reinterpret_cast<Function>(symbol);
  }

 private:
  void* Symbol(const char* name) const;
  void CheckInterface() const;
  void CheckKind(int16_t kind) const;
  void Start(const QuarlHost* host) const;

  std::string name_;
  void* library_;
};

/// The modules of a process by their paths. Any thread. Modules of different paths load side by side.
class ModuleTable {
 public:
  /// @param kind of every module in it, QUARL_MODULE_...
  explicit ModuleTable(int16_t kind) : kind_(kind) {}

  void SetHost(const QuarlHost* host);
  /// The module of a path, loaded now if it is not yet. One that failed is tried again the next time. Throws
  /// HelperError.
  const Module& At(const QuarlBuffer& path);

 private:
  struct Entry {
    std::mutex loading;
    std::unique_ptr<const Module> module;
  };

  int16_t kind_;
  std::mutex mutex_;
  const QuarlHost* host_ = nullptr;
  std::map<std::string, Entry> entries_;
};

}  // namespace quarl::helpers
