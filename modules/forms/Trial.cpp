#include "forms/Trial.h"

#include <array>
#include <atomic>
#include <cstring>

namespace quarl::forms {

namespace {
constexpr std::size_t kReportRoom = 8192;
}

struct Trial::Shared {
  Shared(const QuarlFormCalls& copied, std::string text) : calls(copied), values(std::move(text)) {}
  QuarlFormCalls calls;
  std::string values;
  std::array<char, kReportRoom> report{};
  int16_t result = 0;
  std::atomic<bool> done{false};
};

Trial::Trial(const QuarlFormCalls& calls, std::string values)
    : shared_(std::make_shared<Shared>(calls, std::move(values))) {
  thread_ = std::thread([shared = shared_] {
    const QuarlBuffer report{shared->report.data(), static_cast<uint32_t>(shared->report.size())};
    shared->result = shared->calls.Try(shared->calls.context, shared->values.c_str(), report);
    shared->done.store(true, std::memory_order_release);
  });
}

Trial::~Trial() {
  if (IsDone())
    thread_.join();
  else
    thread_.detach();
}

bool Trial::IsDone() const {
  return shared_->done.load(std::memory_order_acquire);
}

bool Trial::WentWell() const {
  return shared_->result == 0;
}

std::string Trial::Report() const {
  return {shared_->report.data(), strnlen(shared_->report.data(), shared_->report.size())};
}

std::chrono::milliseconds Trial::Elapsed() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin_);
}

}  // namespace quarl::forms
