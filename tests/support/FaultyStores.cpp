#include "support/FaultyStores.h"

#include <algorithm>

namespace quarl::store {

FaultyStores::Faults::Verdict FaultyStores::Faults::Call(const QByteArray& operation) {
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
  Through(Store& store, Faults& faults, const char* name) : store_(store), faults_(faults), name_(name) {}

 protected:
  using S = Store;
  template <typename Result, typename... Parameters, typename... Arguments>
  Result Pass(const char* name, Result (Store::*operation)(Parameters...), const Arguments&... arguments) {
    if (faults_.Call(name_ + name) == Faults::Verdict::Refuse) return Result{};
    return (store_.*operation)(arguments...);
  }
  template <typename... Parameters, typename... Arguments>
  RecordSet Rows(const char* name, RecordSet (Store::*operation)(Parameters...), const Arguments&... arguments) {
    const bool none = faults_.Call(name_ + name) == Faults::Verdict::Refuse;
    RecordSet rows = (store_.*operation)(arguments...);
    while (none && !rows.Eof()) rows.MoveNext();
    return rows;
  }

 private:
  Store& store_;
  Faults& faults_;
  const QByteArray name_;
};

class FaultySystemConfig final : public SystemConfig, private Through<SystemConfig> {
 public:
  FaultySystemConfig(SystemConfig& store, Faults& faults) : Through(store, faults, "SystemConfig.") {}
  qint16 GetServiceState() override { return Pass(__func__, &S::GetServiceState); }
  bool StartService() override { return Pass(__func__, &S::StartService); }
  bool StopService() override { return Pass(__func__, &S::StopService); }
  RecordSet GetTestTypes() override { return Rows(__func__, &S::GetTestTypes); }
  RecordSet GetAlertTypes() override { return Rows(__func__, &S::GetAlertTypes); }
  bool AddTestType(const QString& moduleFile, const QString& productName) override {
    return Pass(__func__, &S::AddTestType, moduleFile, productName);
  }
  bool RemoveTestType(qint32 id) override { return Pass(__func__, &S::RemoveTestType, id); }
  bool AddAlertType(const QString& moduleFile, const QString& productName) override {
    return Pass(__func__, &S::AddAlertType, moduleFile, productName);
  }
  bool RemoveAlertType(qint32 id) override { return Pass(__func__, &S::RemoveAlertType, id); }
};

class FaultyServerStore final : public ServerStore, private Through<ServerStore> {
 public:
  FaultyServerStore(ServerStore& store, Faults& faults) : Through(store, faults, "ServerStore.") {}
  std::optional<ServerRecord> GetServer(qint32 id) override { return Pass(__func__, &S::GetServer, id); }
  bool UpdateServer(qint32 idServer, const QString& name, const QString& ipAddress, qint32 idGroup) override {
    return Pass(__func__, &S::UpdateServer, idServer, name, ipAddress, idGroup);
  }
  qint32 AddServer(const QString& name, const QString& ipAddress, qint32 idGroup) override {
    return Pass(__func__, &S::AddServer, name, ipAddress, idGroup);
  }
  bool RemoveServer(qint32 id) override { return Pass(__func__, &S::RemoveServer, id); }
  bool CheckServer(qint32 id) override { return Pass(__func__, &S::CheckServer, id); }
  RecordSet GetServersByGroup(qint32 id) override { return Rows(__func__, &S::GetServersByGroup, id); }
  RecordSet GetAllServers(qint32 id) override { return Rows(__func__, &S::GetAllServers, id); }
  std::optional<ScheduleRecord> GetServerSchedule(qint32 id) override {
    return Pass(__func__, &S::GetServerSchedule, id);
  }
  bool SetServerSchedule(qint32 id, const ScheduleRecord& schedule) override {
    return Pass(__func__, &S::SetServerSchedule, id, schedule);
  }
  bool SetFailThreshold(qint32 id, qint16 count) override { return Pass(__func__, &S::SetFailThreshold, id, count); }
  qint16 GetFailThreshold(qint32 id) override { return Pass(__func__, &S::GetFailThreshold, id); }
};

class FaultyGroupStore final : public GroupStore, private Through<GroupStore> {
 public:
  FaultyGroupStore(GroupStore& store, Faults& faults) : Through(store, faults, "GroupStore.") {}
  qint32 AddGroup(const QString& name, const QString& description) override {
    return Pass(__func__, &S::AddGroup, name, description);
  }
  bool RemoveGroup(qint32 id) override { return Pass(__func__, &S::RemoveGroup, id); }
  bool CheckGroup(qint32 id) override { return Pass(__func__, &S::CheckGroup, id); }
  RecordSet GetGroups(qint32 id) override { return Rows(__func__, &S::GetGroups, id); }
  std::optional<GroupRecord> GetGroup(qint32 id) override { return Pass(__func__, &S::GetGroup, id); }
  bool UpdateGroup(qint32 id, const QString& name, const QString& description) override {
    return Pass(__func__, &S::UpdateGroup, id, name, description);
  }
  std::optional<ScheduleRecord> GetGroupSchedule(qint32 id) override {
    return Pass(__func__, &S::GetGroupSchedule, id);
  }
  bool SetGroupSchedule(qint32 id, const ScheduleRecord& schedule) override {
    return Pass(__func__, &S::SetGroupSchedule, id, schedule);
  }
  std::optional<ScheduleRecord> GetDefaultSchedule() override { return Pass(__func__, &S::GetDefaultSchedule); }
  bool SetDefaultSchedule(const ScheduleRecord& schedule) override {
    return Pass(__func__, &S::SetDefaultSchedule, schedule);
  }
};

class FaultyTestStore final : public TestStore, private Through<TestStore> {
 public:
  FaultyTestStore(TestStore& store, Faults& faults) : Through(store, faults, "TestStore.") {}
  bool CheckTest(qint32 id) override { return Pass(__func__, &S::CheckTest, id); }
  qint32 AddTest(qint32 idServer, qint32 idTestType, const QString& properties) override {
    return Pass(__func__, &S::AddTest, idServer, idTestType, properties);
  }
  bool RemoveTest(qint32 id) override { return Pass(__func__, &S::RemoveTest, id); }
  RecordSet GetTestsByServer(qint32 id) override { return Rows(__func__, &S::GetTestsByServer, id); }
  std::optional<QString> GetTestProperties(qint32 id) override { return Pass(__func__, &S::GetTestProperties, id); }
  bool SetTestProperties(qint32 id, const QString& properties) override {
    return Pass(__func__, &S::SetTestProperties, id, properties);
  }
  std::optional<QString> GetTestModule(qint32 id) override { return Pass(__func__, &S::GetTestModule, id); }
  bool RenameTest(qint32 id, const QString& name) override { return Pass(__func__, &S::RenameTest, id, name); }
};

class FaultyAlertStore final : public AlertStore, private Through<AlertStore> {
 public:
  FaultyAlertStore(AlertStore& store, Faults& faults) : Through(store, faults, "AlertStore.") {}
  qint32 AddServerAlert(qint32 idServer, qint32 idAlertType, const QString& properties) override {
    return Pass(__func__, &S::AddServerAlert, idServer, idAlertType, properties);
  }
  qint32 AddGroupAlert(qint32 idGroup, qint32 idAlertType, const QString& properties) override {
    return Pass(__func__, &S::AddGroupAlert, idGroup, idAlertType, properties);
  }
  bool RemoveAlert(qint32 id) override { return Pass(__func__, &S::RemoveAlert, id); }
  std::optional<QString> GetAlertProperties(qint32 id) override { return Pass(__func__, &S::GetAlertProperties, id); }
  bool SetAlertProperties(qint32 id, const QString& properties) override {
    return Pass(__func__, &S::SetAlertProperties, id, properties);
  }
  bool MoveAlert(qint32 idAlert, qint32 idGroup, qint32 idServer) override {
    return Pass(__func__, &S::MoveAlert, idAlert, idGroup, idServer);
  }
  std::optional<QString> GetAlertModule(qint32 id) override { return Pass(__func__, &S::GetAlertModule, id); }
  RecordSet GetAlertsByServer(qint32 id) override { return Rows(__func__, &S::GetAlertsByServer, id); }
  RecordSet GetAlertsByGroup(qint32 id) override { return Rows(__func__, &S::GetAlertsByGroup, id); }
  bool RenameAlert(qint32 id, const QString& name) override { return Pass(__func__, &S::RenameAlert, id, name); }
};

class FaultyLogStore final : public LogStore, private Through<LogStore> {
 public:
  FaultyLogStore(LogStore& store, Faults& faults) : Through(store, faults, "LogStore.") {}
  bool AddLog(qint16 severity, const QString& description) override {
    return Pass(__func__, &S::AddLog, severity, description);
  }
  bool ClearLogs() override { return Pass(__func__, &S::ClearLogs); }
  bool SaveLog(const QString& fileName) override { return Pass(__func__, &S::SaveLog, fileName); }
  RecordSet GetLogs() override { return Rows(__func__, &S::GetLogs); }
};

class FaultyInstallConfig final : public InstallConfig, private Through<InstallConfig> {
 public:
  FaultyInstallConfig(InstallConfig& store, Faults& faults) : Through(store, faults, "InstallConfig.") {}
  QString GetInstallPath() override { return Pass(__func__, &S::GetInstallPath); }
};

class FaultyTree final : public TreeReader {
 public:
  FaultyTree(TreeReader& reader, Faults& faults) : reader_(reader), faults_(faults) {}

  TreeRows ReadTree() override {
    using Part = TreeRows::Part;
    const std::tuple<Part, const char*, std::vector<TreeRow> TreeRows::*> parts[] = {
        {Part::Groups, "TreeReader.Groups", &TreeRows::groups},
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

class FaultyChange final : public Change {
 public:
  FaultyChange(std::unique_ptr<Change> change, Faults& faults) : change_(std::move(change)), faults_(faults) {}
  void Commit() override {
    faults_.Call("Change.Commit");
    change_->Commit();
  }

 private:
  std::unique_ptr<Change> change_;
  Faults& faults_;
};

}  // namespace

FaultyStores::FaultyStores(Stores& stores)
    : stores_(stores),
      system_(std::make_unique<FaultySystemConfig>(stores.System(), faults_)),
      servers_(std::make_unique<FaultyServerStore>(stores.Servers(), faults_)),
      groups_(std::make_unique<FaultyGroupStore>(stores.Groups(), faults_)),
      tests_(std::make_unique<FaultyTestStore>(stores.Tests(), faults_)),
      alerts_(std::make_unique<FaultyAlertStore>(stores.Alerts(), faults_)),
      log_(std::make_unique<FaultyLogStore>(stores.Log(), faults_)),
      install_(std::make_unique<FaultyInstallConfig>(stores.Install(), faults_)),
      tree_(std::make_unique<FaultyTree>(stores.Tree(), faults_)) {}

void FaultyStores::ThrowFrom(const QString& operation, int call, const QString& description) {
  faults_.faults_[operation] = {faults_.calls_.value(operation) + call, false, description};
}

void FaultyStores::RefuseFrom(const QString& operation, int call) {
  faults_.faults_[operation] = {faults_.calls_.value(operation) + call, true, {}};
}

void FaultyStores::Heal() {
  faults_.faults_.clear();
  faults_.always_ = QString();
}

std::unique_ptr<Change> FaultyStores::BeginChange() {
  faults_.Call("Stores.BeginChange");
  return std::make_unique<FaultyChange>(stores_.BeginChange(), faults_);
}

}  // namespace quarl::store
