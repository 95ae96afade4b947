#include "support/FaultyStores.h"

#include <algorithm>
#include <numeric>

namespace quarl::store {

FaultyStores::Faults::Verdict FaultyStores::Faults::Call(const char* operation) {
  const QString name = QString::fromLatin1(operation);
  const int call = ++calls_[name];
  if (!always_.isNull()) throw StoreError(always_);
  const auto fault = faults_.constFind(name);
  if (fault == faults_.constEnd() || call < fault->from) return Verdict::Pass;
  if (!fault->refuse) throw StoreError(fault->description);
  return Verdict::Refuse;
}

namespace {

using Faults = FaultyStores::Faults;

/// Hands calls through to one store object unless a fault stops them.
template <typename Store>
class Through {
 public:
  Through(Store& store, Faults& faults) : store_(store), faults_(faults) {}

 protected:
  template <typename Result, typename... Parameters, typename... Arguments>
  Result Pass(const char* name, Result (Store::*operation)(Parameters...), const Arguments&... arguments) {
    if (faults_.Call(name) == Faults::Verdict::Refuse) return Result{};
    return (store_.*operation)(arguments...);
  }
  template <typename... Parameters, typename... Arguments>
  RecordSet Rows(const char* name, RecordSet (Store::*operation)(Parameters...), const Arguments&... arguments) {
    const bool none = faults_.Call(name) == Faults::Verdict::Refuse;
    RecordSet rows = (store_.*operation)(arguments...);
    while (none && !rows.Eof()) rows.MoveNext();
    return rows;
  }

 private:
  Store& store_;
  Faults& faults_;
};

class FaultySystemConfig final : public SystemConfig, private Through<SystemConfig> {
 public:
  using Through<SystemConfig>::Through;
  qint16 GetServiceState() override { return Pass("SystemConfig.GetServiceState", &SystemConfig::GetServiceState); }
  bool StartService() override { return Pass("SystemConfig.StartService", &SystemConfig::StartService); }
  bool StopService() override { return Pass("SystemConfig.StopService", &SystemConfig::StopService); }
  RecordSet GetTestTypes() override { return Rows("SystemConfig.GetTestTypes", &SystemConfig::GetTestTypes); }
  RecordSet GetAlertTypes() override { return Rows("SystemConfig.GetAlertTypes", &SystemConfig::GetAlertTypes); }
  bool AddTestType(const QString& moduleFile, const QString& productName) override {
    return Pass("SystemConfig.AddTestType", &SystemConfig::AddTestType, moduleFile, productName);
  }
  bool RemoveTestType(qint32 idTestType) override {
    return Pass("SystemConfig.RemoveTestType", &SystemConfig::RemoveTestType, idTestType);
  }
  bool AddAlertType(const QString& moduleFile, const QString& productName) override {
    return Pass("SystemConfig.AddAlertType", &SystemConfig::AddAlertType, moduleFile, productName);
  }
  bool RemoveAlertType(qint32 idAlertType) override {
    return Pass("SystemConfig.RemoveAlertType", &SystemConfig::RemoveAlertType, idAlertType);
  }
};

class FaultyServerStore final : public ServerStore, private Through<ServerStore> {
 public:
  using Through<ServerStore>::Through;
  std::optional<ServerRecord> GetServer(qint32 idServer) override {
    return Pass("ServerStore.GetServer", &ServerStore::GetServer, idServer);
  }
  bool UpdateServer(qint32 idServer, const QString& name, const QString& ipAddress, qint32 idGroup) override {
    return Pass("ServerStore.UpdateServer", &ServerStore::UpdateServer, idServer, name, ipAddress, idGroup);
  }
  qint32 AddServer(const QString& name, const QString& ipAddress, qint32 idGroup) override {
    return Pass("ServerStore.AddServer", &ServerStore::AddServer, name, ipAddress, idGroup);
  }
  bool RemoveServer(qint32 idServer) override {
    return Pass("ServerStore.RemoveServer", &ServerStore::RemoveServer, idServer);
  }
  bool CheckServer(qint32 idServer) override {
    return Pass("ServerStore.CheckServer", &ServerStore::CheckServer, idServer);
  }
  RecordSet GetServersByGroup(qint32 idGroup) override {
    return Rows("ServerStore.GetServersByGroup", &ServerStore::GetServersByGroup, idGroup);
  }
  RecordSet GetAllServers(qint32 idGroup) override {
    return Rows("ServerStore.GetAllServers", &ServerStore::GetAllServers, idGroup);
  }
  std::optional<ScheduleRecord> GetServerSchedule(qint32 idServer) override {
    return Pass("ServerStore.GetServerSchedule", &ServerStore::GetServerSchedule, idServer);
  }
  bool SetServerSchedule(qint32 idServer, const ScheduleRecord& schedule) override {
    return Pass("ServerStore.SetServerSchedule", &ServerStore::SetServerSchedule, idServer, schedule);
  }
  bool SetFailThreshold(qint32 idServer, qint16 count) override {
    return Pass("ServerStore.SetFailThreshold", &ServerStore::SetFailThreshold, idServer, count);
  }
  qint16 GetFailThreshold(qint32 idServer) override {
    return Pass("ServerStore.GetFailThreshold", &ServerStore::GetFailThreshold, idServer);
  }
};

class FaultyGroupStore final : public GroupStore, private Through<GroupStore> {
 public:
  using Through<GroupStore>::Through;
  qint32 AddGroup(const QString& name, const QString& description) override {
    return Pass("GroupStore.AddGroup", &GroupStore::AddGroup, name, description);
  }
  bool RemoveGroup(qint32 idGroup) override {
    return Pass("GroupStore.RemoveGroup", &GroupStore::RemoveGroup, idGroup);
  }
  bool CheckGroup(qint32 idGroup) override { return Pass("GroupStore.CheckGroup", &GroupStore::CheckGroup, idGroup); }
  RecordSet GetGroups(qint32 idGroup) override { return Rows("GroupStore.GetGroups", &GroupStore::GetGroups, idGroup); }
  std::optional<GroupRecord> GetGroup(qint32 idGroup) override {
    return Pass("GroupStore.GetGroup", &GroupStore::GetGroup, idGroup);
  }
  bool UpdateGroup(qint32 idGroup, const QString& name, const QString& description) override {
    return Pass("GroupStore.UpdateGroup", &GroupStore::UpdateGroup, idGroup, name, description);
  }
  std::optional<ScheduleRecord> GetGroupSchedule(qint32 idGroup) override {
    return Pass("GroupStore.GetGroupSchedule", &GroupStore::GetGroupSchedule, idGroup);
  }
  bool SetGroupSchedule(qint32 idGroup, const ScheduleRecord& schedule) override {
    return Pass("GroupStore.SetGroupSchedule", &GroupStore::SetGroupSchedule, idGroup, schedule);
  }
  std::optional<ScheduleRecord> GetDefaultSchedule() override {
    return Pass("GroupStore.GetDefaultSchedule", &GroupStore::GetDefaultSchedule);
  }
  bool SetDefaultSchedule(const ScheduleRecord& schedule) override {
    return Pass("GroupStore.SetDefaultSchedule", &GroupStore::SetDefaultSchedule, schedule);
  }
};

class FaultyTestStore final : public TestStore, private Through<TestStore> {
 public:
  using Through<TestStore>::Through;
  bool CheckTest(qint32 idTest) override { return Pass("TestStore.CheckTest", &TestStore::CheckTest, idTest); }
  qint32 AddTest(qint32 idServer, qint32 idTestType, const QString& properties) override {
    return Pass("TestStore.AddTest", &TestStore::AddTest, idServer, idTestType, properties);
  }
  bool RemoveTest(qint32 idTest) override { return Pass("TestStore.RemoveTest", &TestStore::RemoveTest, idTest); }
  RecordSet GetTestsByServer(qint32 idServer) override {
    return Rows("TestStore.GetTestsByServer", &TestStore::GetTestsByServer, idServer);
  }
  std::optional<QString> GetTestProperties(qint32 idTest) override {
    return Pass("TestStore.GetTestProperties", &TestStore::GetTestProperties, idTest);
  }
  bool SetTestProperties(qint32 idTest, const QString& properties) override {
    return Pass("TestStore.SetTestProperties", &TestStore::SetTestProperties, idTest, properties);
  }
  std::optional<QString> GetTestModule(qint32 idTest) override {
    return Pass("TestStore.GetTestModule", &TestStore::GetTestModule, idTest);
  }
  bool RenameTest(qint32 idTest, const QString& name) override {
    return Pass("TestStore.RenameTest", &TestStore::RenameTest, idTest, name);
  }
};

class FaultyAlertStore final : public AlertStore, private Through<AlertStore> {
 public:
  using Through<AlertStore>::Through;
  qint32 AddServerAlert(qint32 idServer, qint32 idAlertType, const QString& properties) override {
    return Pass("AlertStore.AddServerAlert", &AlertStore::AddServerAlert, idServer, idAlertType, properties);
  }
  qint32 AddGroupAlert(qint32 idGroup, qint32 idAlertType, const QString& properties) override {
    return Pass("AlertStore.AddGroupAlert", &AlertStore::AddGroupAlert, idGroup, idAlertType, properties);
  }
  bool RemoveAlert(qint32 idAlert) override {
    return Pass("AlertStore.RemoveAlert", &AlertStore::RemoveAlert, idAlert);
  }
  std::optional<QString> GetAlertProperties(qint32 idAlert) override {
    return Pass("AlertStore.GetAlertProperties", &AlertStore::GetAlertProperties, idAlert);
  }
  bool SetAlertProperties(qint32 idAlert, const QString& properties) override {
    return Pass("AlertStore.SetAlertProperties", &AlertStore::SetAlertProperties, idAlert, properties);
  }
  bool MoveAlert(qint32 idAlert, qint32 idGroup, qint32 idServer) override {
    return Pass("AlertStore.MoveAlert", &AlertStore::MoveAlert, idAlert, idGroup, idServer);
  }
  std::optional<QString> GetAlertModule(qint32 idAlert) override {
    return Pass("AlertStore.GetAlertModule", &AlertStore::GetAlertModule, idAlert);
  }
  RecordSet GetAlertsByServer(qint32 idServer) override {
    return Rows("AlertStore.GetAlertsByServer", &AlertStore::GetAlertsByServer, idServer);
  }
  RecordSet GetAlertsByGroup(qint32 idGroup) override {
    return Rows("AlertStore.GetAlertsByGroup", &AlertStore::GetAlertsByGroup, idGroup);
  }
  bool RenameAlert(qint32 idAlert, const QString& name) override {
    return Pass("AlertStore.RenameAlert", &AlertStore::RenameAlert, idAlert, name);
  }
};

class FaultyLogStore final : public LogStore, private Through<LogStore> {
 public:
  using Through<LogStore>::Through;
  bool AddLog(qint16 severity, const QString& description) override {
    return Pass("LogStore.AddLog", &LogStore::AddLog, severity, description);
  }
  bool ClearLogs() override { return Pass("LogStore.ClearLogs", &LogStore::ClearLogs); }
  bool SaveLog(const QString& fileName) override { return Pass("LogStore.SaveLog", &LogStore::SaveLog, fileName); }
  RecordSet GetLogs() override { return Rows("LogStore.GetLogs", &LogStore::GetLogs); }
};

class FaultyInstallConfig final : public InstallConfig, private Through<InstallConfig> {
 public:
  using Through<InstallConfig>::Through;
  QString GetInstallPath() override { return Pass("InstallConfig.GetInstallPath", &InstallConfig::GetInstallPath); }
};

class FaultyTree final : public TreeReader {
 public:
  FaultyTree(TreeReader& reader, Faults& faults) : reader_(reader), faults_(faults) {}

  TreeRows ReadTree() override {
    using Part = TreeRows::Part;
    const struct {
      Part part;
      const char* name;
      std::vector<TreeRow> TreeRows::*rows;
    } parts[] = {{Part::Groups, "TreeReader.Groups", &TreeRows::groups},
                 {Part::Servers, "TreeReader.Servers", &TreeRows::servers},
                 {Part::Tests, "TreeReader.Tests", &TreeRows::tests},
                 {Part::ServerAlerts, "TreeReader.ServerAlerts", &TreeRows::serverAlerts},
                 {Part::GroupAlerts, "TreeReader.GroupAlerts", &TreeRows::groupAlerts}};
    TreeRows tree = reader_.ReadTree();
    bool ended = false;
    for (const auto& [part, name, rows] : parts) {
      if (!ended && !(tree.failure && tree.failure->part == part)) ended = !Passes(name, part, tree, rows);
      if (ended) (tree.*rows).clear();
      ended = ended || (tree.failure && tree.failure->part == part);
    }
    return tree;
  }

 private:
  bool Passes(const char* name, TreeRows::Part part, TreeRows& tree, std::vector<TreeRow> TreeRows::*rows) {
    try {
      if (faults_.Call(name) == Faults::Verdict::Refuse) (tree.*rows).clear();
      return true;
    } catch (const StoreError& error) {
      tree.failure = TreeRows::Failure{part, error};
      return false;
    }
  }

  TreeReader& reader_;
  Faults& faults_;
};

}  // namespace

struct FaultyStores::Parts {
  Parts(Stores& stores, Faults& faults)
      : system(stores.System(), faults),
        servers(stores.Servers(), faults),
        groups(stores.Groups(), faults),
        tests(stores.Tests(), faults),
        alerts(stores.Alerts(), faults),
        log(stores.Log(), faults),
        install(stores.Install(), faults),
        tree(stores.Tree(), faults) {}
  FaultySystemConfig system;
  FaultyServerStore servers;
  FaultyGroupStore groups;
  FaultyTestStore tests;
  FaultyAlertStore alerts;
  FaultyLogStore log;
  FaultyInstallConfig install;
  FaultyTree tree;
};

FaultyStores::FaultyStores(Stores& stores) : parts_(std::make_unique<Parts>(stores, faults_)) {}

FaultyStores::~FaultyStores() = default;

void FaultyStores::ThrowFrom(const QString& operation, int call, const QString& description) {
  faults_.faults_[operation] = {faults_.calls_.value(operation) + call, false, description};
}

void FaultyStores::RefuseFrom(const QString& operation, int call) {
  faults_.faults_[operation] = {faults_.calls_.value(operation) + call, true, {}};
}

void FaultyStores::ThrowAlways(const QString& description) {
  faults_.always_ = description;
}

void FaultyStores::Heal() {
  faults_.faults_.clear();
  faults_.always_ = QString();
}

int FaultyStores::Calls(const QString& operation) const {
  return faults_.calls_.value(operation);
}

int FaultyStores::Calls() const {
  return std::accumulate(faults_.calls_.cbegin(), faults_.calls_.cend(), 0);
}

SystemConfig& FaultyStores::System() {
  return parts_->system;
}

ServerStore& FaultyStores::Servers() {
  return parts_->servers;
}

GroupStore& FaultyStores::Groups() {
  return parts_->groups;
}

TestStore& FaultyStores::Tests() {
  return parts_->tests;
}

AlertStore& FaultyStores::Alerts() {
  return parts_->alerts;
}

LogStore& FaultyStores::Log() {
  return parts_->log;
}

InstallConfig& FaultyStores::Install() {
  return parts_->install;
}

TreeReader& FaultyStores::Tree() {
  return parts_->tree;
}

}  // namespace quarl::store
