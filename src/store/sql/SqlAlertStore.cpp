#include "store/sql/SqlAlertStore.h"

#include "store/sql/Rows.h"
#include "store/sql/SqlText.h"

namespace quarl::store::sql {

namespace {

struct OwnerSql {
  std::string exists, nextPosition, add, list;

  /// @param word what the owner's table and columns are named after. @param parameter its id in the statement add.
  OwnerSql(std::string_view word, std::string_view parameter)
      : exists(Filled("SELECT 1 FROM %owner%s WHERE id_%owner% = $1", {{"%owner%", word}})),
        nextPosition(
            Filled("SELECT COALESCE(MAX(position), 0) + 1 FROM alerts WHERE id_%owner% = $1", {{"%owner%", word}})),
        // Nothing is added where the type or the owner is not there.
        add(Filled("INSERT INTO alerts (id_alert, id_group, id_server, position, id_alert_type, name, properties)"
                   " SELECT $1, $2, $3, (SELECT COALESCE(MAX(position), 0) + 1 FROM alerts WHERE id_%owner% = %id%),"
                   " id_alert_type, name, $4 FROM alert_types WHERE id_alert_type = $5"
                   " AND EXISTS (SELECT 1 FROM %owner%s WHERE id_%owner% = %id%)",
                   {{"%owner%", word}, {"%id%", parameter}})),
        list(Filled("SELECT a.id_alert, a.name, y.name, a.id_alert_type FROM alerts a"
                    " LEFT JOIN alert_types y ON y.id_alert_type = a.id_alert_type"
                    " WHERE a.id_%owner% = $1 ORDER BY a.position, a.id_alert",
                    {{"%owner%", word}})) {}
};

const OwnerSql& GroupSql() {
  static const OwnerSql sql("group", "$2");
  return sql;
}

const OwnerSql& ServerSql() {
  static const OwnerSql sql("server", "$3");
  return sql;
}

const Fields& AlertFields() {
  static const Fields fields = MakeFields({{"IDAlert", FieldType::Integer},
                                           {"AlertName", FieldType::Text},
                                           {"AlertType", FieldType::Text},
                                           {"IDAlertType", FieldType::Integer}});
  return fields;
}

}  // namespace

/// The one owner of an alert.
struct SqlAlertStore::Owner {
  std::optional<qint32> group, server;
  const OwnerSql& sql;

  static Owner Group(qint32 id) { return {id, std::nullopt, GroupSql()}; }
  static Owner Server(qint32 id) { return {std::nullopt, id, ServerSql()}; }

  qint32 Id() const { return group ? *group : *server; }
  bool Exists(Connection& connection) const { return sql::Exists(connection, sql.exists, Id()); }
  qint64 NextPosition(Connection& connection) const {
    Query query(connection, sql.nextPosition, Id());
    query.Next();
    return query.Integer(0);
  }
};

qint32 SqlAlertStore::Add(const Owner& owner, qint32 idAlertType, const QString& properties) {
  return database_.Write([&](Connection& connection) {
    const qint32 id = NextId(connection, "alerts");
    const bool added =
        id > 0 && Change(connection, owner.sql.add, id, owner.group, owner.server, properties, idAlertType) > 0;
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
  return List(Owner::Server(idServer));
}

RecordSet SqlAlertStore::GetAlertsByGroup(qint32 idGroup) {
  return List(Owner::Group(idGroup));
}

RecordSet SqlAlertStore::List(const Owner& owner) {
  return database_.Read(
      [&](Connection& connection) { return Fetch(connection, AlertFields(), owner.sql.list, owner.Id()); });
}

bool SqlAlertStore::RenameAlert(qint32 idAlert, const QString& name) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "UPDATE alerts SET name = $1 WHERE id_alert = $2", name, idAlert) > 0;
  });
}

}  // namespace quarl::store::sql
