#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "plugins/contract/HostProtocol.h"
#include "service/workers/WorkerProcess.h"

namespace quarl::service {

struct WorkerCall {
  plugins::HostRequest request;  ///< its id is the pool's to give
  int limitMs = 0;               ///< from when a worker takes the call, and anew for each time it is made again
  bool urgent = false;           ///< ahead of the calls that wait for this module
};

/// How a call of a module ended.
struct WorkerAnswer {
  enum class End {
    Answered,  ///< reply is the module's
    NotMade,   ///< the module could not be called
    Crashed,   ///< the process ended during this call
    TimedOut,  ///< the call did not come back in time; its process was killed
  };
  End end = End::NotMade;
  plugins::HostReply reply;
  QString sentence;  ///< for all but Answered: what happened, for people
};

struct PoolSetup {
  QString program;                     ///< native path of quarl-modulehost
  int threadsAWorker = 64;             ///< calls that one worker serves at once
  int stepsAWorker = 1000;             ///< the same for a module whose checks take no thread
  int workersAModule = 4;              ///< at most
  qint64 memoryLimit = kWorkerMemory;  ///< bytes of data for one worker; 0: no limit
  CgroupTree* cgroups = nullptr;       ///< borrowed; null where none is delegated
};

/// Long-lived worker processes for modules, each process for one module, so that a module takes down only its own
/// calls. When a worker ends under several calls, each of them is made again in a process of its own, so that exactly
/// the guilty one fails; calls that a hung neighbour took down are made again, too. A module whose processes do not
/// even end when they are killed is not called until they do. Main thread.
class WorkerPool {
 public:
  using Done = std::function<void(const WorkerAnswer&)>;

  /// @param keeper borrowed; outlives the pool.
  WorkerPool(PoolSetup setup, ChildKeeper& keeper);
  ~WorkerPool();

  /// Makes a call. done is called exactly once, from the event loop.
  /// @param module native path of the module's file
  void Run(const QString& module, WorkerCall call, Done done);
  /// Tells from the event loop that a call cannot be made.
  void Refuse(const QString& sentence, Done done);
  /// Calls that are not done. Of each module no more count than its workers serve at once: those that wait behind a
  /// module that hangs take nobody else's place.
  std::size_t Load() const;
  /// Kills every worker with everything it started; nothing is told any more.
  void Abort();
  /// Told each line that a module or its host has for the log.
  std::function<void(const QString&)> log;

 private:
  struct Module;
  struct Job {
    Module* module = nullptr;  ///< null for a call that was refused
    plugins::HostRequest request;
    int limitMs = 0;
    Done done;
    int interrupted = 0;  ///< how often a neighbour ended its worker
    qint64 deadline = 0;
  };
  struct Worker {
    std::unique_ptr<WorkerProcess> process;
    std::unordered_map<std::uint32_t, Job> jobs;
    std::size_t capacity = 1;
    bool retired = false;  ///< takes no more jobs
    qint64 killedAt = -1;  ///< when it was seen to be killed; it is here until it has ended
    qint64 idleSince = 0;
  };
  struct Module {
    QString path;
    std::vector<std::unique_ptr<Worker>> workers;
    std::deque<Job> waiting;
    std::size_t calls = 0;   ///< not done
    int lines = 0;           ///< for the log, in this tick
    qint64 aloneUntil = -1;  ///< every call has a process of its own until then
    int steps = 0;           ///< checks that take no thread of a worker, at once; 0: its checks take one each
    qint64 lookedAt = -1;    ///< when the file was looked at
    QString stamp;           ///< of the file that the workers have loaded
  };

  void Dispatch(Module& module);
  Worker* WorkerFor(Module& module, const Job& job);
  Worker* NewWorker(Module& module, std::size_t capacity);
  void Replied(Module& module, Worker& worker, plugins::HostReply reply);
  void Ended(Module& module, Worker& worker, int waitStatus);
  void Overdue(Module& module, Worker& worker);
  /// A killed worker that does not end, because the kernel holds it, gives up its calls.
  void TakeBackFromUndead(Module& module, Worker& worker);
  void MakeAgain(Module& module, Worker& worker);
  /// Was killed a while ago and has not ended.
  bool IsUndead(const Worker& worker) const;
  bool HasTooManyUndead(const Module& module) const;
  /// Refuses all calls that wait.
  void RefuseAll(Module& module);
  void Finish(Job job, WorkerAnswer answer);
  void Tick();
  void LookAtFile(Module& module);
  bool MustBeAlone(const Module& module, const Job& job) const;
  /// Calls that a worker of this module serves at once.
  std::size_t Capacity(const Module& module) const;
  void TakeSteps(Module& module, int atOnce);

  PoolSetup setup_;
  ChildKeeper& keeper_;
  std::map<QString, Module> modules_;
  std::vector<std::pair<Job, WorkerAnswer>> finished_;  ///< to be told at the next turn of the event loop
  std::uint32_t lastId_ = 0;
  QElapsedTimer clock_;
  QTimer tick_;
  QTimer tell_;
};

/// One line of at most 1,000 characters without control characters, of what a module said.
QString ModuleLine(const std::string& utf8);
/// "ping.dll" of a path.
QString ModuleName(const QString& path);

}  // namespace quarl::service
