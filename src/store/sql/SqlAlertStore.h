#pragma once

#include "store/AlertStore.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlAlertStore final : public AlertStore {
 public:
  explicit SqlAlertStore(Database& database) : database_(database) {}
  qint32 AddServerAlert(qint32 idServer, qint32 idAlertType, const QString& properties) override;
  qint32 AddGroupAlert(qint32 idGroup, qint32 idAlertType, const QString& properties) override;
  bool RemoveAlert(qint32 idAlert) override;
  std::optional<QString> GetAlertProperties(qint32 idAlert) override;
  bool SetAlertProperties(qint32 idAlert, const QString& properties) override;
  bool MoveAlert(qint32 idAlert, qint32 idGroup, qint32 idServer) override;
  std::optional<QString> GetAlertModule(qint32 idAlert) override;
  RecordSet GetAlertsByServer(qint32 idServer) override;
  RecordSet GetAlertsByGroup(qint32 idGroup) override;
  bool RenameAlert(qint32 idAlert, const QString& name) override;

 private:
  struct Owner;
  qint32 Add(const Owner& owner, qint32 idAlertType, const QString& properties);
  RecordSet List(const Owner& owner);
  Database& database_;
};

}  // namespace quarl::store::sql
