#include "service/ServiceRig.h"

namespace quarl::service {

void ScriptedRunner::Start(const CheckJob& job, Done done) {
  started.push_back(job);
  waiting_.emplace_back(job, std::move(done));
}

void ScriptedRunner::Deliver() {
  std::deque<std::pair<CheckJob, Done>> now;
  now.swap(waiting_);
  for (const auto& [job, done] : now) {
    const auto at = outcomes.find(job.idTest);
    done(at == outcomes.end() ? Outcome(store::TestState::Passed, QStringLiteral("fine")) : at->second);
  }
}

std::vector<qint32> ScriptedRunner::Running() const {
  std::vector<qint32> ids;
  for (const auto& [job, done] : waiting_) ids.push_back(job.idTest);
  return ids;
}

void ScriptedSender::Send(const AlertJob& job, Done done) {
  sent.push_back(job);
  waiting_.push_back(std::move(done));
}

void ScriptedSender::Deliver(const QString& reason) {
  std::deque<Done> now;
  now.swap(waiting_);
  for (const Done& done : now) done({reason.isEmpty(), reason});
}

QString ScriptedSender::TakeSubjects() {
  QStringList subjects;
  for (; told_ < sent.size(); ++told_) subjects.append(sent[told_].subject);
  return subjects.join(u'|');
}

CheckOutcome Outcome(store::TestState state, const QString& text) {
  return {.state = state, .text = text, .performance = {}};
}

store::SqlSetup ServiceRig::Setup() const {
  store::SqlSetup setup = folder.Setup();
  setup.clock = &clock;
  setup.syncEveryChange = false;
  return setup;
}

ServiceRig::ServiceRig() : stores(Setup()), console(Setup()) {
  testType = folder.AddTestType(stores, QStringLiteral("Ping"));
  alertType = folder.AddAlertType(stores, QStringLiteral("Mail"));
  group = stores.Groups().AddGroup(QStringLiteral("edge"), {});
  server = stores.Servers().AddServer(QStringLiteral("north"), QStringLiteral("10.0.0.1"), group);
  echo = stores.Tests().AddTest(server, testType, QStringLiteral("e"));
  page = stores.Tests().AddTest(server, testType, QStringLiteral("p"));
  EXPECT_TRUE(stores.Tests().RenameTest(echo, QStringLiteral("Echo")));
  EXPECT_TRUE(stores.Tests().RenameTest(page, QStringLiteral("Page")));
  ownAlert = stores.Alerts().AddServerAlert(server, alertType, QStringLiteral("own"));
  groupAlert = stores.Alerts().AddGroupAlert(group, alertType, QStringLiteral("group"));
  EXPECT_TRUE(stores.Servers().SetFailThreshold(server, 1));
  EXPECT_TRUE(stores.Groups().SetDefaultSchedule({true, QDate(2020, 1, 1), QTime(0, 0), 1, 1}));
}

std::unique_ptr<Service> ServiceRig::MakeService(store::ServiceStore& store) {
  ServiceOptions options;
  options.zone = QTimeZone::utc();
  options.problem = [this](const QString& text) { problems.append(text); };
  return std::make_unique<Service>(ServiceParts{store, runner, sender, clock}, std::move(options));
}

void ServiceRig::Run(Service& service, qint64 ms, qint64 stepMs) {
  for (qint64 passed = 0; passed < ms; passed += stepMs) {
    clock.Pass(stepMs);
    std::ignore = service.Step();
    runner.Deliver();
    sender.Deliver();
  }
  std::ignore = service.Step();
}

}  // namespace quarl::service
