#pragma once

#include <poll.h>

#include <cerrno>
#include <coroutine>
#include <exception>
#include <utility>
#include <variant>

#include "kit/Deadline.h"

// Work that waits for descriptors without a thread of its own: functions that give a Task are coroutines, Steps drives
// one of them.

namespace quarl::kit {

/// What a task waits for.
struct Wait {
  int descriptor = -1;
  short events = 0;  ///< POLLIN, POLLOUT
  Deadline deadline{std::chrono::milliseconds(0)};
};

namespace steps {

/// What the tasks of one Steps share: where it goes on, and for what it waits.
struct Strand {
  std::coroutine_handle<> next;
  Wait wait;
  short came = 0;
};

struct Promise {
  Strand* strand = nullptr;
  std::coroutine_handle<> caller;

  struct Return {
    bool await_ready() const noexcept { return false; }
    template <typename Own>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<Own> ended) const noexcept {
      const std::coroutine_handle<> caller = ended.promise().caller;
      return caller ? caller : std::noop_coroutine();
    }
    void await_resume() const noexcept {}
  };
  std::suspend_always initial_suspend() const noexcept { return {}; }
  Return final_suspend() const noexcept { return {}; }
};

template <typename Value>
struct ValuePromise : Promise {
  std::variant<std::monostate, Value, std::exception_ptr> result;
  void return_value(Value value) { result.template emplace<1>(std::move(value)); }
  void unhandled_exception() { result.template emplace<2>(std::current_exception()); }
  Value Take() {
    if (result.index() == 2) std::rethrow_exception(std::get<2>(result));
    return std::move(std::get<1>(result));
  }
};

template <>
struct ValuePromise<void> : Promise {
  std::exception_ptr error;
  void return_void() const noexcept {}
  void unhandled_exception() { error = std::current_exception(); }
  void Take() const {
    if (error) std::rethrow_exception(error);
  }
};

}  // namespace steps

/// What a coroutine gives. It begins when it is awaited by another or driven by Steps; what its arguments refer to must
/// live until it has ended. Exceptions reach the one who awaits it. One thread.
template <typename Value>
class [[nodiscard]] Task {
 public:
  struct promise_type : steps::ValuePromise<Value> {
    Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
  };

  Task(Task&& other) noexcept : own_(std::exchange(other.own_, nullptr)) {}
  ~Task() {
    if (own_) own_.destroy();
  }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  Task& operator=(Task&&) = delete;

  bool await_ready() const noexcept { return false; }
  template <typename Caller>
  std::coroutine_handle<> await_suspend(std::coroutine_handle<Caller> caller) {
    own_.promise().strand = caller.promise().strand;
    own_.promise().caller = caller;
    return own_;
  }
  Value await_resume() { return own_.promise().Take(); }

 private:
  template <typename Any>
  friend class Steps;
  explicit Task(std::coroutine_handle<promise_type> own) : own_(own) {}

  std::coroutine_handle<promise_type> own_;
};

/// co_await Ready(...) waits and gives the events that came, 0 when the time was over first.
class Ready {
 public:
  Ready(int descriptor, short events, const Deadline& deadline) : wait_{descriptor, events, deadline} {}
  bool await_ready() const noexcept { return false; }
  template <typename Caller>
  void await_suspend(std::coroutine_handle<Caller> caller) {
    strand_ = caller.promise().strand;
    strand_->wait = wait_;
    strand_->next = caller;
  }
  short await_resume() const noexcept { return strand_->came; }

 private:
  Wait wait_;
  steps::Strand* strand_ = nullptr;
};

/// co_await Pause() lets others go on. A loop whose tasks may end without waiting has to pause in each round, or it
/// keeps the thread and, in a build without optimisation, grows the stack.
inline Ready Pause() {
  return {-1, 0, Deadline(std::chrono::milliseconds(0))};
}

/// Drives a task.
template <typename Value>
class Steps {
 public:
  explicit Steps(Task<Value> task) : task_(std::move(task)) {
    task_.own_.promise().strand = &strand_;
    strand_.next = task_.own_;
  }
  Steps(const Steps&) = delete;
  Steps& operator=(const Steps&) = delete;

  /// Runs until the task waits or has ended; true when it has ended.
  /// @param came the events that it waited for, 0 when its time is over; of no account in the first step
  bool Go(short came) {
    strand_.came = came;
    strand_.next.resume();
    return task_.own_.done();
  }
  /// What it waits for, after Go() gave false.
  const Wait& Waiting() const { return strand_.wait; }
  /// The value, after Go() gave true; throws what the task threw.
  Value Result() { return task_.await_resume(); }
  /// Goes all the way on this thread.
  Value Finish() {
    for (short came = 0; !Go(came);) {
      pollfd wanted{strand_.wait.descriptor, strand_.wait.events, 0};
      while (poll(&wanted, 1, strand_.wait.deadline.PollTime()) < 0 && errno == EINTR) {
      }
      came = wanted.revents;
    }
    return Result();
  }

 private:
  steps::Strand strand_;
  Task<Value> task_;
};

}  // namespace quarl::kit
