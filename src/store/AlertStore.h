#pragma once

#include <QString>
#include <optional>

#include "store/RecordSet.h"

namespace quarl::store {

/// The alerts attached to servers and groups; each has exactly one owner. For threads and errors see SystemConfig.
class AlertStore {
 public:
  virtual ~AlertStore() = default;

  /// Adds an alert under its type's name, as the owner's last one.
  /// @param properties the property string it starts with.
  /// @return the new id, or a number below 1: no such owner or type, or the ids are used up.
  [[nodiscard]] virtual qint32 AddServerAlert(qint32 idServer, qint32 idAlertType, const QString& properties) = 0;
  /// The same for a group; 0 is the root group.
  [[nodiscard]] virtual qint32 AddGroupAlert(qint32 idGroup, qint32 idAlertType, const QString& properties) = 0;
  [[nodiscard]] virtual bool RemoveAlert(qint32 idAlert) = 0;
  [[nodiscard]] virtual std::optional<QString> GetAlertProperties(qint32 idAlert) = 0;
  virtual bool SetAlertProperties(qint32 idAlert, const QString& properties) = 0;
  /// Gives the alert a new owner, whose last alert it becomes: the server idServer where that is not 0, else the
  /// group idGroup (both 0: the root group). False: no such alert or owner, or both are given.
  virtual bool MoveAlert(qint32 idAlert, qint32 idGroup, qint32 idServer) = 0;
  [[nodiscard]] virtual std::optional<QString> GetAlertModule(qint32 idAlert) = 0;
  /// IDAlert, AlertName, AlertType, IDAlertType; in the order in which the owner got them.
  [[nodiscard]] virtual RecordSet GetAlertsByServer(qint32 idServer) = 0;
  [[nodiscard]] virtual RecordSet GetAlertsByGroup(qint32 idGroup) = 0;
  virtual bool RenameAlert(qint32 idAlert, const QString& name) = 0;
};

}  // namespace quarl::store
