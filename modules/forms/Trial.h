#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "quarl_module.h"

namespace quarl::forms {

/// One call of a module's Try on a thread of its own. A trial that is destroyed while it runs goes on by itself and its
/// result is dropped.
class Trial {
 public:
  Trial(const QuarlFormCalls& calls, std::string values);
  ~Trial();
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;

  bool IsDone() const;
  /// Once it is done: whether it went well, and what the module reports.
  bool WentWell() const;
  std::string Report() const;
  std::chrono::milliseconds Elapsed() const;

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::thread thread_;
};

}  // namespace quarl::forms
