#include "StepLoop.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>

#include "ModuleCall.h"

namespace quarl::host {
namespace {

using plugins::HostReply;
using plugins::HostRequest;
using std::chrono::milliseconds;

constexpr std::uint64_t kChannel = 0;  // key of the channel among those of checks
constexpr std::size_t kMostAnswers = 65536;
constexpr milliseconds kAnswersWait{40};  // each message wakes the service
constexpr milliseconds kGrace{250};       // the module's own time-out comes first
constexpr int kStuckSeconds = 5;
constexpr int kStuck = 71;
constexpr rlim_t kDescriptorsACheck = 8;
constexpr rlim_t kOwnDescriptors = 64;

std::uint32_t EpollEvents(int16_t events) {
  return ((events & POLLIN) != 0 ? EPOLLIN : 0U) | ((events & POLLOUT) != 0 ? EPOLLOUT : 0U) |
         static_cast<std::uint32_t>(EPOLLONESHOT);
}

/// As poll() names them.
short CameOf(std::uint32_t events) {
  short came = 0;
  for (const auto& [theirs, ours] : {std::pair(EPOLLIN, POLLIN), std::pair(EPOLLOUT, POLLOUT),
                                     std::pair(EPOLLERR, POLLERR), std::pair(EPOLLHUP, POLLHUP)}) {
    if ((events & theirs) != 0) came = static_cast<short>(came | ours);
  }
  return came;
}

}  // namespace

StepLoop::StepLoop(HostChannel& channel) : channel_(channel), poll_(epoll_create1(EPOLL_CLOEXEC)) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = kChannel;
  if (poll_ < 0 || epoll_ctl(poll_, EPOLL_CTL_ADD, channel.Descriptor(), &event) != 0)
    throw std::system_error(errno, std::generic_category(), "epoll");
}

void StepLoop::MakeRoom(int checks) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlim_t wanted = static_cast<rlim_t>(checks) * kDescriptorsACheck + kOwnDescriptors;
  limit.rlim_cur = std::max(limit.rlim_cur, std::min(limit.rlim_max, wanted));
  setrlimit(RLIMIT_NOFILE, &limit);
}

void StepLoop::Begin(const HelperLibrary& helper, const void* steps, HostRequest request) {
  if (helper_ == nullptr) {
    step_ = helper.Find<decltype(&CheckStep)>("CheckStep");
    helper_ = &helper;
  }
  if (!watched_) {
    std::thread([this] { Watch(); }).detach();
    watched_ = true;
  }
  const std::uint64_t key = ++lastKey_;
  Check& check = checks_[key];
  check.request = std::move(request);
  check.steps = steps;
  check.wait.size = sizeof(QuarlCheckWait);
  check.question = QuestionOf(check.request);
  check.end = Clock::now() + milliseconds(check.question.timeLimit) + kGrace;
  Step(key, 0);
}

int16_t StepLoop::Call(Check& check, QuarlCheckResult& result) {
  rooms_.Begin(check.request.id);
  request_ = check.request.id;
  ++stepping_;
  const int16_t state = step_(check.steps, &check.question, &check.wait, &result);
  ++stepping_;
  return state;
}

void StepLoop::Step(std::uint64_t key, short came) {
  const auto at = checks_.find(key);
  if (at == checks_.end()) return;
  Check& check = at->second;
  check.wait.events = came;
  QuarlCheckResult result = rooms_.Result();
  const int16_t state = Call(check, result);
  const std::string failure = helper_->Failure();
  if (failure.empty() && state != QUARL_WAITING) {
    Say(rooms_.Reply(check.request.id, state, result));
    checks_.erase(at);
    return;
  }
  if (!failure.empty()) return End(key, Refusal(check.request.id, failure));
  Await(key, check);
}

void StepLoop::End(std::uint64_t key, const HostReply& reply) {
  Say(reply);
  checks_.erase(key);
}

void StepLoop::GiveUp(std::uint64_t key, Check& check, const HostReply& reply) {
  check.wait.events = QUARL_GIVE_UP;
  QuarlCheckResult unread = rooms_.Result();
  Call(check, unread);
  End(key, reply);
}

void StepLoop::Await(std::uint64_t key, Check& check) {
  const Clock::time_point now = Clock::now();
  if (now >= check.end) {
    HostReply late;
    late.id = check.request.id;
    late.word = plugins::HostWord::TimedOut;
    return GiveUp(key, check, late);
  }
  if (const int error = Arm(key, check); error != 0) {
    return GiveUp(key, check,
                  Refusal(check.request.id, "The module waits for what cannot be waited for: " +
                                                std::generic_category().message(error) + '.'));
  }
  check.due = std::min(now + milliseconds(check.wait.time), check.end);
  due_.emplace(check.due, key);
}

int StepLoop::Arm(std::uint64_t key, Check& check) const {
  check.armed = -1;
  if (check.wait.descriptor < 0) return 0;
  if (check.wait.descriptor == channel_.Descriptor() || check.wait.descriptor == poll_) return EBADF;
  epoll_event event{};
  event.events = EpollEvents(check.wait.events);
  event.data.u64 = key;
  int failed = epoll_ctl(poll_, EPOLL_CTL_ADD, check.wait.descriptor, &event);
  if (failed != 0 && errno == EEXIST) failed = epoll_ctl(poll_, EPOLL_CTL_MOD, check.wait.descriptor, &event);
  if (failed != 0) return errno;
  check.armed = check.wait.descriptor;
  return 0;
}

void StepLoop::Disarm(Check& check) const {
  if (check.armed >= 0) epoll_ctl(poll_, EPOLL_CTL_DEL, check.armed, nullptr);
  check.armed = -1;
}

void StepLoop::Say(const HostReply& reply) {
  if (answers_.empty()) answersSince_ = Clock::now();
  AppendFrameOrRefusal(answers_, reply);
  ++answersHeld_;
  if (answers_.size() >= kMostAnswers) Flush();
}

bool StepLoop::FlushDue() {
  const bool due = answersHeld_ >= checks_.size() || Clock::now() - answersSince_ >= kAnswersWait;
  return !due || Flush();
}

bool StepLoop::Flush() {
  if (answers_.empty()) return true;
  const bool sent = channel_.SendFrames(answers_);
  answers_.clear();
  answersHeld_ = 0;
  return sent;
}

int StepLoop::UntilNextMs() const {
  if (due_.empty() && answers_.empty()) return -1;
  Clock::time_point next = due_.empty() ? Clock::time_point::max() : due_.begin()->first;
  if (!answers_.empty()) next = std::min(next, answersSince_ + kAnswersWait);
  const auto left = std::chrono::ceil<milliseconds>(next - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, INT_MAX));
}

bool StepLoop::Turn() {
  std::array<epoll_event, 256> events;
  const int count = epoll_wait(poll_, events.data(), static_cast<int>(events.size()), UntilNextMs());
  bool readable = false;
  for (int i = 0; i < count; ++i) {
    const epoll_event& event = events[static_cast<std::size_t>(i)];
    const std::uint64_t key = event.data.u64;
    if (key == kChannel) {
      readable = true;
      continue;
    }
    const auto at = checks_.find(key);
    if (at == checks_.end()) continue;
    due_.erase({at->second.due, key});
    at->second.armed = -1;
    Step(key, CameOf(event.events));
  }
  StepDueOnes();
  return readable;
}

// After a long turn the time of a check may be over although what it waits for has come.
void StepLoop::StepDueOnes() {
  const Clock::time_point now = Clock::now();
  while (!due_.empty() && due_.begin()->first <= now) {
    const std::uint64_t key = due_.begin()->second;
    due_.erase(due_.begin());
    Check& check = checks_.at(key);
    pollfd wanted{check.armed, check.wait.events, 0};
    if (check.armed >= 0) poll(&wanted, 1, 0);
    Disarm(check);
    Step(key, wanted.revents);
  }
}

// A step that waits holds up every other check.
void StepLoop::Watch() {
  std::uint64_t seen = 0;
  for (int seconds = 0;;) {
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const std::uint64_t now = stepping_;
    seconds = now == seen && now % 2 == 1 ? seconds + 1 : 0;
    seen = now;
    if (seconds < kStuckSeconds) continue;
    HostReply stuck = Refusal(
        request_, "A step of this check did not come back within " + std::to_string(kStuckSeconds) + " seconds.");
    stuck.word = plugins::HostWord::Stuck;
    // The other thread is inside the step, so the answers stay as they are.
    if (!answers_.empty()) std::ignore = channel_.SendFrames(answers_);
    std::ignore = channel_.Send(stuck);
    _exit(kStuck);
  }
}

}  // namespace quarl::host
