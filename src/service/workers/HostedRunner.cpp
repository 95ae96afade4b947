#include "service/workers/HostedRunner.h"

#include <quarl_module.h>

#include "base/Error.h"

namespace quarl::service {
namespace {

constexpr qint64 kKnownMs = 2'000;

store::TestState StateOf(std::int16_t result) {
  switch (result) {
    case static_cast<int>(store::TestState::Passed):
      return store::TestState::Passed;
    case static_cast<int>(store::TestState::Failed):
      return store::TestState::Failed;
    default:
      return store::TestState::NotRun;
  }
}

CheckOutcome OutcomeOf(const WorkerAnswer& answer) {
  CheckOutcome outcome;
  if (answer.end == WorkerAnswer::End::Answered) {
    const plugins::HostReply& reply = answer.reply;
    outcome.state = StateOf(reply.result);
    if (!reply.texts.empty()) outcome.text = ModuleLine(reply.texts[0]);
    if (reply.texts.size() > 1) outcome.performance = ModuleLine(reply.texts[1]);
    return outcome;
  }
  // A test that never comes back is what a server that hangs looks like; a broken module says nothing about a server.
  if (answer.end == WorkerAnswer::End::TimedOut) outcome.state = store::TestState::Failed;
  outcome.text = answer.sentence;
  return outcome;
}

plugins::EventFacts FactsOf(const AlertJob& job) {
  plugins::EventFacts facts;
  facts.subject = job.subject.toStdString();
  QString message = job.text;
  facts.message = message.replace(u'\n', QLatin1String("\r\n")).toStdString();
  facts.serverName = job.serverName.toStdString();
  facts.serverAddress = job.serverAddress.toStdString();
  facts.problemId = job.thread.toStdString();
  facts.messageId = facts.problemId + '.' + std::to_string(job.idMessage);
  facts.kind = job.recovery ? QUARL_EVENT_RECOVERY : QUARL_EVENT_PROBLEM;
  facts.groupName = job.groupName.toStdString();
  facts.testName = job.testName.toStdString();
  facts.resultText = job.resultText.toStdString();
  facts.time = job.timeMs / 1000;
  facts.since = job.sinceMs / 1000;
  facts.properties = job.properties.toStdString();
  return facts;
}

}  // namespace

const ModulePaths::Path& ModulePaths::Of(const QString& module) {
  const qint64 nowMs = clock_.elapsed();
  Known& known = known_[module];
  if (known.path.text.isEmpty() || nowMs >= known.untilMs) {
    known.path.text = InstallPaths::Resolve(
        InstallPaths::ModulePath(paths_.InstallFolder(), ModuleCallSite::Properties, kind_, module));
    known.path.bytes = known.path.text.toStdString();
    known.untilMs = nowMs + kKnownMs;
  }
  return known.path;
}

HostedRunner::HostedRunner(WorkerPool& pool, InstallPaths paths, std::size_t mostAtOnce)
    : pool_(pool), paths_(std::move(paths), ModuleKind::Test), mostAtOnce_(mostAtOnce) {}

void HostedRunner::Start(const CheckJob& job, Done done) {
  WorkerPool::Done tell = [finished = std::move(done)](const WorkerAnswer& answer) { finished(OutcomeOf(answer)); };
  try {
    const ModulePaths::Path& path = paths_.Of(job.module);
    plugins::CheckFacts facts{job.serverName.toStdString(), job.serverAddress.toStdString(),
                              job.properties.toStdString(), std::chrono::milliseconds(job.timeLimitMs)};
    pool_.Run(path.text, {plugins::CheckRequest(0, path.bytes, std::move(facts)), job.timeLimitMs, job.urgent},
              std::move(tell));
  } catch (const Error& error) {
    pool_.Refuse(error.Description(), std::move(tell));
  }
}

void HostedSender::Send(const AlertJob& job, Done done) {
  WorkerPool::Done tell = [finished = std::move(done)](const WorkerAnswer& answer) {
    const bool answered = answer.end == WorkerAnswer::End::Answered;
    const bool delivered = answered && answer.reply.result == 0;
    QString reason = answer.sentence;
    if (answered && !answer.reply.texts.empty()) reason = ModuleLine(answer.reply.texts[0]);
    finished({delivered, delivered ? QString() : reason});
  };
  try {
    const ModulePaths::Path& path = paths_.Of(job.module);
    pool_.Run(path.text, {plugins::EventRequest(0, path.bytes, FactsOf(job)), job.timeLimitMs}, std::move(tell));
  } catch (const Error& error) {
    pool_.Refuse(error.Description(), std::move(tell));
  }
}

}  // namespace quarl::service
