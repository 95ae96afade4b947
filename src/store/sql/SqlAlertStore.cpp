#include "store/sql/SqlAlertStore.h"

#include "store/sql/Rows.h"

namespace quarl::store::sql {

/// The one owner of an alert.
struct SqlAlertStore::Owner {
  std::optional<qint32> group, server;

  static Owner Group(qint32 id) { return {id, std::nullopt}; }
  static Owner Server(qint32 id) { return {std::nullopt, id}; }

  bool Exists(Connection& connection) const {
    return group ? sql::Exists(connection, "SELECT 1 FROM groups WHERE id_group = $1", *group)
                 : sql::Exists(connection, "SELECT 1 FROM servers WHERE id_server = $1", *server);
  }

  qint64 NextPosition(Connection& connection) const {
    Query query(connection,
                group ? "SELECT COALESCE(MAX(position), 0) + 1 FROM alerts WHERE id_group = $1"
                      : "SELECT COALESCE(MAX(position), 0) + 1 FROM alerts WHERE id_server = $1",
                group ? *group : *server);
    query.Next();
    return query.Integer(0);
  }
};

namespace {

// Nothing is added where the type or the owner is not there.
constexpr const char* kAddServerAlert =
    "INSERT INTO alerts (id_alert, id_group, id_server, position, id_alert_type, name, properties)"
    " SELECT $1, $2, $3, (SELECT COALESCE(MAX(position), 0) + 1 FROM alerts WHERE id_server = $3), id_alert_type, name,"
    " $4 FROM alert_types WHERE id_alert_type = $5 AND EXISTS (SELECT 1 FROM servers WHERE id_server = $3)";
constexpr const char* kAddGroupAlert =
    "INSERT INTO alerts (id_alert, id_group, id_server, position, id_alert_type, name, properties)"
    " SELECT $1, $2, $3, (SELECT COALESCE(MAX(position), 0) + 1 FROM alerts WHERE id_group = $2), id_alert_type, name,"
    " $4 FROM alert_types WHERE id_alert_type = $5 AND EXISTS (SELECT 1 FROM groups WHERE id_group = $2)";

const Fields& AlertFields() {
  static const Fields fields = MakeFields({{"IDAlert", FieldType::Integer},
                                           {"AlertName", FieldType::Text},
                                           {"AlertType", FieldType::Text},
                                           {"IDAlertType", FieldType::Integer}});
  return fields;
}

}  // namespace

qint32 SqlAlertStore::Add(const Owner& owner, qint32 idAlertType, const QString& properties) {
  return database_.Write([&](Connection& connection) {
    const qint32 id = NextId(connection, "alerts");
    const bool added = id > 0 && Change(connection, owner.group ? kAddGroupAlert : kAddServerAlert, id, owner.group,
                                        owner.server, properties, idAlertType) > 0;
    return added ? id : 0;
  });
}

qint32 SqlAlertStore::AddServerAlert(qint32 idServer, qint32 idAlertType, const QString& properties) {
  return Add(Owner::Server(idServer), idAlertType, properties);
}

qint32 SqlAlertStore::AddGroupAlert(qint32 idGroup, qint32 idAlertType, const QString& properties) {
  return Add(Owner::Group(idGroup), idAlertType, properties);
}

bool SqlAlertStore::RemoveAlert(qint32 idAlert) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "DELETE FROM alerts WHERE id_alert = $1", idAlert) > 0;
  });
}

std::optional<QString> SqlAlertStore::GetAlertProperties(qint32 idAlert) {
  return database_.Read([&](Connection& connection) {
    return FetchText(connection, "SELECT properties FROM alerts WHERE id_alert = $1", idAlert);
  });
}

bool SqlAlertStore::SetAlertProperties(qint32 idAlert, const QString& properties) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "UPDATE alerts SET properties = $1 WHERE id_alert = $2", properties, idAlert) > 0;
  });
}

bool SqlAlertStore::MoveAlert(qint32 idAlert, qint32 idGroup, qint32 idServer) {
  if (idGroup != 0 && idServer != 0) return false;
  const Owner owner = idServer != 0 ? Owner::Server(idServer) : Owner::Group(idGroup);
  return database_.Write([&](Connection& connection) {
    return owner.Exists(connection) &&
           Change(connection, "UPDATE alerts SET id_group = $1, id_server = $2, position = $3 WHERE id_alert = $4",
                  owner.group, owner.server, owner.NextPosition(connection), idAlert) > 0;
  });
}

std::optional<QString> SqlAlertStore::GetAlertModule(qint32 idAlert) {
  return database_.Read([&](Connection& connection) {
    return FetchText(connection,
                     "SELECT y.module FROM alerts a JOIN alert_types y ON y.id_alert_type = a.id_alert_type"
                     " WHERE a.id_alert = $1",
                     idAlert);
  });
}

RecordSet SqlAlertStore::GetAlertsByServer(qint32 idServer) {
  return database_.Read([&](Connection& connection) {
    return Fetch(connection, AlertFields(),
                 "SELECT a.id_alert, a.name, y.name, a.id_alert_type FROM alerts a"
                 " LEFT JOIN alert_types y ON y.id_alert_type = a.id_alert_type"
                 " WHERE a.id_server = $1 ORDER BY a.position, a.id_alert",
                 idServer);
  });
}

RecordSet SqlAlertStore::GetAlertsByGroup(qint32 idGroup) {
  return database_.Read([&](Connection& connection) {
    return Fetch(connection, AlertFields(),
                 "SELECT a.id_alert, a.name, y.name, a.id_alert_type FROM alerts a"
                 " LEFT JOIN alert_types y ON y.id_alert_type = a.id_alert_type"
                 " WHERE a.id_group = $1 ORDER BY a.position, a.id_alert",
                 idGroup);
  });
}

bool SqlAlertStore::RenameAlert(qint32 idAlert, const QString& name) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "UPDATE alerts SET name = $1 WHERE id_alert = $2", name, idAlert) > 0;
  });
}

}  // namespace quarl::store::sql
