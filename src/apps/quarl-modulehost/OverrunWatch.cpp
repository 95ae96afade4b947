#include "OverrunWatch.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstring>
#include <tuple>
#include <utility>

namespace quarl::host {
namespace {

constexpr int kSlots = 1024;
constexpr std::size_t kFrameLimit = 64;

// begin is 0 in a free slot and 1 in one that is being filled.
struct Slot {
  std::atomic<std::uintptr_t> begin{0};
  std::atomic<std::uintptr_t> end{0};
  std::array<char, kFrameLimit> frame{};
  std::size_t frameSize = 0;
};

std::array<Slot, kSlots> slots;
HostChannel* channel = nullptr;

void OnFault(int signal, siginfo_t* info, void* /*context*/) {
  const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
  const bool byMemory = info->si_code > 0;
  for (const Slot& slot : slots) {
    if (!byMemory || slot.begin <= 1 || address < slot.begin || address >= slot.end) continue;
    channel->SendFromHandler(slot.frame.data(), slot.frameSize);
    break;
  }
  struct sigaction usual {};
  usual.sa_handler = SIG_DFL;
  sigaction(signal, &usual, nullptr);
  if (!byMemory) std::ignore = raise(signal);  // else the same instruction faults again
}

}  // namespace

void OverrunWatch::Install(HostChannel& toTell) {
  channel = &toTell;
  PrepareThread();
  struct sigaction action {};
  action.sa_sigaction = OnFault;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGBUS, &action, nullptr);
}

void OverrunWatch::PrepareThread() {
  thread_local std::array<char, 32768> memory;
  stack_t stack{};
  stack.ss_sp = memory.data();
  stack.ss_size = memory.size();
  sigaltstack(&stack, nullptr);
}

WatchedGuard::WatchedGuard(const void* begin, std::size_t size, std::uint32_t request) {
  for (int i = 0; i < kSlots && slot_ < 0; ++i) {
    std::uintptr_t freeSlot = 0;
    if (slots[static_cast<std::size_t>(i)].begin.compare_exchange_strong(freeSlot, 1)) slot_ = i;
  }
  if (slot_ < 0) return;
  Follow(request);
  Slot& slot = slots[static_cast<std::size_t>(slot_)];
  slot.end = reinterpret_cast<std::uintptr_t>(begin) + size;
  slot.begin = reinterpret_cast<std::uintptr_t>(begin);
}

WatchedGuard::WatchedGuard(WatchedGuard&& other) noexcept : slot_(std::exchange(other.slot_, -1)) {}

void WatchedGuard::Follow(std::uint32_t request) {
  if (slot_ < 0) return;
  const std::string frame = plugins::OverrunFrame(request);
  Slot& slot = slots[static_cast<std::size_t>(slot_)];
  slot.frameSize = std::min(frame.size(), kFrameLimit);
  std::memcpy(slot.frame.data(), frame.data(), slot.frameSize);
}

WatchedGuard::~WatchedGuard() {
  if (slot_ >= 0) slots[static_cast<std::size_t>(slot_)].begin = 0;
}

}  // namespace quarl::host
