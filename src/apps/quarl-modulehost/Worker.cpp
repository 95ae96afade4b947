#include "Worker.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "ModuleCall.h"
#include "OverrunWatch.h"
#include "StepLoop.h"

namespace quarl::host {
namespace {

using plugins::HostOperation;
using plugins::HostReply;
using plugins::HostRequest;

bool NeedsNoDialog(HostOperation operation) {
  return operation == HostOperation::Check || operation == HostOperation::Alert ||
         operation == HostOperation::AlertEvent;
}

/// The helper libraries, each loaded with the first call for it. Any thread.
class Helpers {
 public:
  Helpers(std::string folder, const QuarlHost& host) : folder_(std::move(folder)), host_(host) {}

  /// A library that cannot be loaded is tried again with the next request. Throws CallError.
  const HelperLibrary& Of(ModuleKind kind) {
    const std::lock_guard lock(mutex_);
    auto& helper = helpers_[kind];
    if (!helper) helper = std::make_unique<HelperLibrary>(folder_, kind, host_);
    return *helper;
  }

 private:
  std::string folder_;
  const QuarlHost& host_;
  std::mutex mutex_;
  std::map<ModuleKind, std::unique_ptr<HelperLibrary>> helpers_;
};

/// Makes calls that may wait, each on a thread. Threads are started when they are needed and then kept.
class Pool {
 public:
  Pool(HostChannel& channel, Helpers& helpers, int threads)
      : channel_(channel), helpers_(helpers), most_(static_cast<std::size_t>(threads)) {}

  /// Waits while the queue is full, so that the sender feels it.
  void Add(HostRequest request) {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [this] { return queue_.size() < most_ * 4; });
    queue_.push_back(std::move(request));
    if (queue_.size() > idle_ && threads_ < most_) {
      ++threads_;
      std::thread([this] { Work(); }).detach();
    }
    work_.notify_one();
  }

 private:
  [[noreturn]] void Work() {
    OverrunWatch::PrepareThread();
    for (;;) channel_.Send(Answer(Take()));
  }

  HostRequest Take() {
    std::unique_lock lock(mutex_);
    ++idle_;
    work_.wait(lock, [this] { return !queue_.empty(); });
    --idle_;
    HostRequest request = std::move(queue_.front());
    queue_.pop_front();
    room_.notify_one();
    return request;
  }

  HostReply Answer(const HostRequest& request) {
    try {
      return CallModule(helpers_.Of(request.kind), request);
    } catch (const CallError& error) {
      return Refusal(request.id, error.what());
    }
  }

  HostChannel& channel_;
  Helpers& helpers_;
  std::size_t most_;
  std::mutex mutex_;
  std::condition_variable work_, room_;
  std::deque<HostRequest> queue_;
  std::size_t threads_ = 0, idle_ = 0;
};

class Server {
 public:
  Server(HostChannel& channel, std::string folder, const QuarlHost& host, int threads)
      : channel_(channel), helpers_(std::move(folder), host), pool_(channel, helpers_, threads), loop_(channel) {}

  void Serve() {
    do {
      if (loop_.Turn() && !channel_.Read()) return;
      while (auto request = channel_.Next()) Take(std::move(*request));
    } while (!channel_.IsBroken() && loop_.FlushDue());
  }

 private:
  void Take(HostRequest request) {
    const std::uint32_t id = request.id;
    try {
      if (!NeedsNoDialog(request.operation)) throw CallError("This operation needs a process of its own.");
      const void* const steps = request.operation == HostOperation::Check ? StepsOf(request) : nullptr;
      if (steps == nullptr) return pool_.Add(std::move(request));
      const HelperLibrary& helper = helpers_.Of(request.kind);
      loop_.Begin(helper, steps, std::move(request));
    } catch (const CallError& error) {
      channel_.Send(Refusal(id, error.what()));
    }
  }

  // The module is loaded here, on the thread that reads: there is one module in a worker.
  const void* StepsOf(const HostRequest& request) {
    const auto known = steps_.find(request.texts.front());
    if (known != steps_.end()) return known->second;
    std::string path = request.texts.front();
    const void* steps = nullptr;
    const QuarlBuffer buffer{path.data(), static_cast<std::uint32_t>(path.size() + 1)};
    const int16_t atOnce = helpers_.Of(request.kind).Call<decltype(&FindSteps)>("FindSteps", buffer, &steps);
    if (atOnce > 0) {
      StepLoop::MakeRoom(atOnce);
      HostReply stepped;
      stepped.word = plugins::HostWord::Stepped;
      stepped.result = atOnce;
      channel_.Send(stepped);
    }
    steps_.emplace(std::move(path), steps);
    return steps;
  }

  HostChannel& channel_;
  Helpers helpers_;
  Pool pool_;
  StepLoop loop_;
  std::map<std::string, const void*> steps_;
};

}  // namespace

void Serve(HostChannel& channel, const std::string& folder, const QuarlHost& host, int threads) {
  // Its threads live as long as the process.
  static Server& server = *new Server(channel, folder, host, threads);
  server.Serve();
}

}  // namespace quarl::host
