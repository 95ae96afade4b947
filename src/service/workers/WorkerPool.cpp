#include "service/workers/WorkerPool.h"

#include <sys/wait.h>

#include <QDateTime>
#include <QFileInfo>
#include <algorithm>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include "base/Error.h"

namespace quarl::service {
namespace {

constexpr int kTickMs = 100;
constexpr qint64 kGraceMs = 500;           // the module's own time-out comes first, then its worker's
constexpr qint64 kAloneMs = 5 * 60'000;    // for which a module that crashed is not trusted with several calls
constexpr qint64 kIdleMs = 10 * 60'000;    // after which a worker without calls is ended
constexpr qint64 kLookMs = 5'000;          // how often a module's file is looked at
constexpr std::size_t kAloneWorkers = 16;  // processes of one call each, of one module
constexpr int kMostUndead = 8;             // processes of one module that were killed and have not ended
constexpr qint64 kDyingMs = 1'000;         // in which a killed process ends, unless the kernel holds it
constexpr int kInterruptionsUntilAlone = 2;
constexpr int kLinesATick = 10;  // for the log, of one module; what it says beyond is dropped
constexpr qsizetype kLongestLine = 1000;

QString Limit(int ms) {
  return ms % 1000 == 0 ? QStringLiteral("%1 s").arg(ms / 1000) : QStringLiteral("%1 ms").arg(ms);
}

WorkerAnswer Sentence(WorkerAnswer::End end, const QString& sentence) {
  return {end, {}, sentence};
}

QString HowItEnded(const QString& path, int waitStatus) {
  const QString name = ModuleName(path);
  if (WIFSIGNALED(waitStatus)) {
    const char* abbreviation = sigabbrev_np(WTERMSIG(waitStatus));
    return QStringLiteral("The module %1 crashed (SIG%2).")
        .arg(name, abbreviation != nullptr ? QString::fromLatin1(abbreviation) : QString::number(WTERMSIG(waitStatus)));
  }
  return QStringLiteral("The module %1 ended its process with code %2.").arg(name).arg(WEXITSTATUS(waitStatus));
}

WorkerAnswer NotInTime(const QString& path, int limitMs) {
  return Sentence(WorkerAnswer::End::TimedOut,
                  QStringLiteral("The module %1 did not answer within %2.").arg(ModuleName(path), Limit(limitMs)));
}

WorkerAnswer AnswerOf(const QString& path, int limitMs, plugins::HostReply reply) {
  switch (reply.word) {
    case plugins::HostWord::Answered:
      return {WorkerAnswer::End::Answered, std::move(reply), {}};
    case plugins::HostWord::TimedOut:
      return NotInTime(path, limitMs);
    default:
      return Sentence(WorkerAnswer::End::NotMade, ModuleLine(reply.texts.front()));
  }
}

QString StampOf(const QString& path) {
  const QFileInfo file(path);
  return QStringLiteral("%1 %2").arg(file.size()).arg(file.lastModified().toMSecsSinceEpoch());
}

}  // namespace

QString ModuleLine(const std::string& utf8) {
  const bool plain = std::all_of(utf8.begin(), utf8.end(), [](char c) { return c >= ' ' && c <= '~'; });
  if (plain && std::ssize(utf8) <= kLongestLine) return QString::fromLatin1(utf8).trimmed();
  QString line = QString::fromUtf8(utf8.data(), std::min<qsizetype>(std::ssize(utf8), 4 * kLongestLine));
  line.truncate(kLongestLine);
  if (!line.isEmpty() && line.back().isHighSurrogate()) line.chop(1);
  for (QChar& c : line) {
    if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator) c = u' ';
  }
  return line.trimmed();
}

QString ModuleName(const QString& path) {
  return QFileInfo(path).fileName();
}

WorkerPool::WorkerPool(PoolSetup setup, ChildKeeper& keeper) : setup_(std::move(setup)), keeper_(keeper) {
  clock_.start();
  tick_.setInterval(kTickMs);
  tell_.setSingleShot(true);
  QObject::connect(&tick_, &QTimer::timeout, &tick_, [this] { Tick(); });
  QObject::connect(&tell_, &QTimer::timeout, &tell_, [this] {
    const auto told = std::exchange(finished_, {});
    finished_.reserve(told.size());
    for (const auto& [job, answer] : told) {
      if (job.module != nullptr) --job.module->calls;
    }
    for (const auto& [job, answer] : told) job.done(answer);
  });
  tick_.start();
}

WorkerPool::~WorkerPool() {
  Abort();
}

void WorkerPool::Run(const QString& module, WorkerCall call, Done done) {
  Module& entry = modules_[module];
  entry.path = module;
  ++entry.calls;
  Job job;
  job.module = &entry;
  job.request = std::move(call.request);
  job.limitMs = call.limitMs;
  job.done = std::move(done);
  if (call.urgent) {
    entry.waiting.push_front(std::move(job));
  } else {
    entry.waiting.push_back(std::move(job));
  }
  LookAtFile(entry);
  Dispatch(entry);
}

void WorkerPool::Refuse(const QString& sentence, Done done) {
  Job job;
  job.done = std::move(done);
  Finish(std::move(job), Sentence(WorkerAnswer::End::NotMade, sentence));
}

void WorkerPool::Abort() {
  modules_.clear();
  finished_.clear();
}

std::size_t WorkerPool::Load() const {
  const auto workers = static_cast<std::size_t>(setup_.workersAModule);
  const qint64 now = clock_.elapsed();
  std::size_t load = 0;
  for (const auto& [path, module] : modules_) {
    load += std::min(module.calls, now < module.aloneUntil ? kAloneWorkers : Capacity(module) * workers);
  }
  return load;
}

std::size_t WorkerPool::Capacity(const Module& module) const {
  const int calls = module.steps > 0 ? std::min(module.steps, setup_.stepsAWorker) : setup_.threadsAWorker;
  return static_cast<std::size_t>(std::max(calls, 2));
}

void WorkerPool::TakeSteps(Module& module, int atOnce) {
  module.steps = atOnce;
  for (const auto& worker : module.workers) {
    if (worker->capacity > 1 && !worker->retired) worker->capacity = Capacity(module);
  }
  Dispatch(module);
}

bool WorkerPool::MustBeAlone(const Module& module, const Job& job) const {
  return job.interrupted >= kInterruptionsUntilAlone || clock_.elapsed() < module.aloneUntil;
}

WorkerPool::Worker* WorkerPool::WorkerFor(Module& module, const Job& job) {
  const bool alone = MustBeAlone(module, job);
  std::size_t fitting = 0;
  Worker* best = nullptr;
  for (const auto& worker : module.workers) {
    if (worker->retired || worker->process->WasKilled() || (worker->capacity == 1) != alone) continue;
    ++fitting;
    if (worker->jobs.size() >= worker->capacity) continue;
    if (best == nullptr || worker->jobs.size() < best->jobs.size()) best = worker.get();
  }
  if (best != nullptr) return best;
  const std::size_t most = alone ? kAloneWorkers : static_cast<std::size_t>(setup_.workersAModule);
  if (fitting >= most) return nullptr;
  return NewWorker(module, alone ? 1 : Capacity(module));
}

WorkerPool::Worker* WorkerPool::NewWorker(Module& module, std::size_t capacity) {
  auto worker = std::make_unique<Worker>();
  Worker* const raw = worker.get();
  Module* const owner = &module;
  raw->capacity = capacity;
  raw->idleSince = clock_.elapsed();
  raw->process = std::make_unique<WorkerProcess>(
      WorkerSetup{setup_.program, capacity == 1 ? 1 : setup_.threadsAWorker, setup_.memoryLimit}, keeper_,
      setup_.cgroups,
      WorkerProcess::Events{[this, owner, raw](plugins::HostReply reply) { Replied(*owner, *raw, std::move(reply)); },
                            [this, owner, raw](int status) { Ended(*owner, *raw, status); }});
  module.workers.push_back(std::move(worker));
  return raw;
}

void WorkerPool::Dispatch(Module& module) {
  while (!module.waiting.empty()) {
    try {
      if (HasTooManyUndead(module)) return RefuseAll(module);
      Worker* const worker = WorkerFor(module, module.waiting.front());
      if (worker == nullptr) return;
      Job job = std::move(module.waiting.front());
      module.waiting.pop_front();
      job.request.id = ++lastId_ == 0 ? ++lastId_ : lastId_;
      job.deadline = clock_.elapsed() + job.limitMs + kGraceMs;
      const auto place = worker->jobs.emplace(job.request.id, std::move(job)).first;
      try {
        worker->process->Send(place->second.request);
      } catch (const std::length_error&) {
        Job tooLong = std::move(place->second);
        worker->jobs.erase(place);
        Finish(std::move(tooLong), Sentence(WorkerAnswer::End::NotMade,
                                            QStringLiteral("The properties are too long to be handed to a module.")));
      }
    } catch (const Error& error) {
      Job job = std::move(module.waiting.front());
      module.waiting.pop_front();
      Finish(std::move(job), Sentence(WorkerAnswer::End::NotMade, error.Description()));
    }
  }
}

void WorkerPool::Replied(Module& module, Worker& worker, plugins::HostReply reply) {
  if (reply.word == plugins::HostWord::LogLine) {
    if (log && ++module.lines <= kLinesATick) {
      log(QStringLiteral("%1: %2").arg(ModuleName(module.path), ModuleLine(reply.texts.front())));
    }
    return;
  }
  if (reply.word == plugins::HostWord::Stepped) {
    if (!worker.retired) TakeSteps(module, reply.result);
    return;
  }
  // After an overrun the process ends by itself; its end tells.
  if (!reply.IsLast() || reply.word == plugins::HostWord::Overrun) return;
  if (reply.word == plugins::HostWord::Stuck) {
    worker.retired = true;  // its end blames nobody else
    worker.process->Kill();
  }
  const auto place = worker.jobs.find(reply.id);
  if (place == worker.jobs.end()) return;
  Job job = std::move(place->second);
  worker.jobs.erase(place);
  worker.idleSince = clock_.elapsed();
  WorkerAnswer answer = AnswerOf(module.path, job.limitMs, std::move(reply));
  Finish(std::move(job), std::move(answer));
  Dispatch(module);
}

void WorkerPool::Ended(Module& module, Worker& worker, int waitStatus) {
  auto& jobs = worker.jobs;
  if (!worker.retired && !jobs.empty()) module.aloneUntil = clock_.elapsed() + kAloneMs;
  if (!worker.retired && jobs.size() == 1) {
    Job guilty = std::move(jobs.begin()->second);
    jobs.clear();
    Finish(std::move(guilty), Sentence(WorkerAnswer::End::Crashed, HowItEnded(module.path, waitStatus)));
  }
  MakeAgain(module, worker);
  std::erase_if(module.workers, [&](const auto& each) { return each.get() == &worker; });
  Dispatch(module);
}

void WorkerPool::MakeAgain(Module& module, Worker& worker) {
  for (auto& [id, job] : worker.jobs) {
    ++job.interrupted;
    module.waiting.push_front(std::move(job));
  }
  worker.jobs.clear();
}

bool WorkerPool::IsUndead(const Worker& worker) const {
  return worker.killedAt >= 0 && clock_.elapsed() - worker.killedAt >= kDyingMs;
}

bool WorkerPool::HasTooManyUndead(const Module& module) const {
  const auto undead = [this](const auto& worker) { return IsUndead(*worker); };
  return std::count_if(module.workers.begin(), module.workers.end(), undead) >= kMostUndead;
}

void WorkerPool::TakeBackFromUndead(Module& module, Worker& worker) {
  if (!IsUndead(worker) || worker.jobs.empty()) return;
  MakeAgain(module, worker);
  Dispatch(module);
}

void WorkerPool::RefuseAll(Module& module) {
  for (Job& job : std::exchange(module.waiting, {})) {
    Finish(std::move(job), Sentence(WorkerAnswer::End::NotMade,
                                    QStringLiteral("The module %1 is not called: %2 processes of it do not end.")
                                        .arg(ModuleName(module.path))
                                        .arg(kMostUndead)));
  }
}

void WorkerPool::Overdue(Module& module, Worker& worker) {
  const qint64 now = clock_.elapsed();
  if (worker.killedAt < 0 && worker.process->WasKilled()) worker.killedAt = now;
  if (worker.killedAt >= 0) return;
  bool found = false;
  for (auto place = worker.jobs.begin(); place != worker.jobs.end();) {
    if (now < place->second.deadline) {
      ++place;
      continue;
    }
    found = true;
    WorkerAnswer answer = NotInTime(module.path, place->second.limitMs);
    Finish(std::move(place->second), std::move(answer));
    place = worker.jobs.erase(place);
  }
  if (!found) return;
  // A thread that hangs cannot be taken back. The others' calls are made again when the end is told.
  worker.retired = true;
  worker.killedAt = now;
  worker.process->Kill();
}

void WorkerPool::Tick() {
  const qint64 now = clock_.elapsed();
  for (auto& [path, module] : modules_) {
    module.lines = 0;
    for (std::size_t i = 0; i < module.workers.size(); ++i) {
      Overdue(module, *module.workers[i]);
      TakeBackFromUndead(module, *module.workers[i]);
    }
    std::erase_if(module.workers, [&](const auto& worker) {
      const bool spare = worker->retired || now - worker->idleSince > kIdleMs ||
                         (worker->capacity == 1 && now >= module.aloneUntil && now - worker->idleSince > kLookMs);
      return worker->jobs.empty() && !worker->process->WasKilled() && spare;
    });
  }
}

void WorkerPool::LookAtFile(Module& module) {
  const qint64 now = clock_.elapsed();
  if (module.lookedAt >= 0 && now - module.lookedAt < kLookMs) return;
  module.lookedAt = now;
  const QString stamp = StampOf(module.path);
  if (stamp == module.stamp) return;
  module.stamp = stamp;
  module.aloneUntil = -1;
  module.steps = 0;
  for (const auto& worker : module.workers) worker->retired = true;
}

void WorkerPool::Finish(Job job, WorkerAnswer answer) {
  finished_.emplace_back(std::move(job), std::move(answer));
  if (!tell_.isActive()) tell_.start(0);
}

}  // namespace quarl::service
