#include "store/sql/ConfigurationRules.h"

#include <QSet>

#include "store/StoreError.h"
#include "store/sql/ModuleInstaller.h"
#include "store/sql/Schedules.h"

namespace quarl::store::sql {
namespace {

QString Named(const char* kind, const QString& name) {
  return QStringLiteral("%1 \"%2\"").arg(QString::fromLatin1(kind), name.left(80));
}

[[noreturn]] void Refuse(const QString& record, const QString& fault) {
  throw StoreError(QStringLiteral("%1: %2.").arg(record, fault));
}

/// The ids of one sequence.
class Ids {
 public:
  void Add(qint32 id, const QString& record) {
    if (id < 0) Refuse(record, QStringLiteral("%1 is no id").arg(id));
    if (id == 0) return;
    if (ids_.contains(id)) Refuse(record, QStringLiteral("the id %1 is used twice").arg(id));
    ids_.insert(id);
  }
  bool Contains(qint32 id) const { return ids_.contains(id); }

 private:
  QSet<qint32> ids_;
};

class Rules {
 public:
  void Check(const Configuration& configuration) {
    CheckTypes(configuration.testTypes, testTypes_, "Test type");
    CheckTypes(configuration.alertTypes, alertTypes_, "Alert type");
    const GroupConfiguration& root = configuration.root;
    if (root.id != 0 || !root.name.isEmpty() || !root.description.isEmpty()) {
      Refuse(QStringLiteral("The root group"), QStringLiteral("it has the id 0, no name and no description"));
    }
    CheckContent(root, QStringLiteral("The root group"));
    for (const GroupConfiguration& group : configuration.groups) {
      const QString record = Named("Group", group.name);
      nodes_.Add(group.id, record);
      CheckContent(group, record);
    }
  }

 private:
  static void CheckTypes(const std::vector<TypeConfiguration>& types, Ids& ids, const char* kind) {
    QSet<QString> modules;
    for (const TypeConfiguration& type : types) {
      const QString record = Named(kind, type.name);
      ids.Add(type.id, record);
      if (const QString fault = ModuleNameFault(type.module); !fault.isEmpty()) Refuse(record, fault);
      const QString folded = type.module.toCaseFolded();
      if (modules.contains(folded)) {
        Refuse(record, QStringLiteral("another type has the module \"%1\"").arg(type.module));
      }
      modules.insert(folded);
    }
  }

  static void CheckSchedule(const std::optional<ScheduleRecord>& schedule, const QString& record) {
    if (schedule && !IsStorable(*schedule)) {
      Refuse(record, QStringLiteral("the start date is outside the years 1 to 9999"));
    }
  }

  void CheckContent(const GroupConfiguration& group, const QString& record) {
    CheckSchedule(group.schedule, record);
    CheckAlerts(group.alerts);
    for (const ServerConfiguration& server : group.servers) {
      const QString serverRecord = Named("Server", server.name);
      nodes_.Add(server.id, serverRecord);
      CheckSchedule(server.schedule, serverRecord);
      CheckAlerts(server.alerts);
      for (const TestConfiguration& test : server.tests) {
        const QString testRecord = Named("Test", test.name);
        tests_.Add(test.id, testRecord);
        if (!testTypes_.Contains(test.idTestType)) {
          Refuse(testRecord, QStringLiteral("there is no test type %1").arg(test.idTestType));
        }
      }
    }
  }

  void CheckAlerts(const std::vector<AlertConfiguration>& alerts) {
    for (const AlertConfiguration& alert : alerts) {
      const QString record = Named("Alert", alert.name);
      alerts_.Add(alert.id, record);
      if (!alertTypes_.Contains(alert.idAlertType)) {
        Refuse(record, QStringLiteral("there is no alert type %1").arg(alert.idAlertType));
      }
    }
  }

  Ids testTypes_, alertTypes_, nodes_, tests_, alerts_;
};

}  // namespace

void CheckConfiguration(const Configuration& configuration) {
  Rules().Check(configuration);
}

}  // namespace quarl::store::sql
