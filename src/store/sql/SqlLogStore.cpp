#include "store/sql/SqlLogStore.h"

#include <QDateTime>
#include <QSaveFile>

#include "store/sql/Rows.h"

namespace quarl::store::sql {
namespace {

QString TimeText(qint64 ms) {
  const QDateTime local = QDateTime::fromMSecsSinceEpoch(ms);
  QString text = local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODateWithMs);
  if (text.endsWith(u'Z')) text.replace(text.size() - 1, 1, QStringLiteral("+00:00"));
  return text;
}

/// One line without control characters, from which the text can be had back.
QString Escaped(const QString& text) {
  QString line;
  line.reserve(text.size());
  for (const QChar c : text) {
    if (c == u'\\') {
      line += QStringLiteral("\\\\");
    } else if (c == u'\n') {
      line += QStringLiteral("\\n");
    } else if (c == u'\r') {
      line += QStringLiteral("\\r");
    } else if (c == u'\t') {
      line += QStringLiteral("\\t");
    } else if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator) {
      line += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
    } else {
      line += c;
    }
  }
  return line;
}

}  // namespace

bool SqlLogStore::AddLog(qint16 severity, const QString& description) {
  if (severity < static_cast<qint16>(Severity::Information) || severity > static_cast<qint16>(Severity::Error)) {
    return false;
  }
  return database_.Write([&](Connection& connection) {
    return Change(connection, "INSERT INTO log_records (logged_ms, id_severity, description) VALUES ($1, $2, $3)",
                  clock_.NowMs(), severity, description) > 0;
  });
}

bool SqlLogStore::ClearLogs() {
  return database_.Write([](Connection& connection) {
    Change(connection, "DELETE FROM log_records");
    return true;
  });
}

RecordSet SqlLogStore::GetLogs() {
  static const Fields fields = MakeFields(
      {{"LogDescription", FieldType::Text}, {"IDSeverity", FieldType::Integer}, {"LogDate", FieldType::DateTime}});
  return database_.Read([&](Connection& connection) {
    return Fetch(connection, fields, "SELECT description, id_severity, logged_ms FROM log_records ORDER BY id_log");
  });
}

bool SqlLogStore::SaveLog(const QString& fileName) {
  QSaveFile file(fileName);
  if (!file.open(QIODevice::WriteOnly)) return false;
  const bool written = database_.Read([&](Connection& connection) {
    Query query(connection,
                "SELECT l.logged_ms, s.name, l.description FROM log_records l"
                " JOIN severities s ON s.id_severity = l.id_severity ORDER BY l.id_log");
    while (query.Next()) {
      const QString line = TimeText(TimeOf(query, 0)) + u'\t' + query.Text(1) + u'\t' + Escaped(query.Text(2)) + u'\n';
      const QByteArray bytes = line.toUtf8();
      if (file.write(bytes) != bytes.size()) return false;
    }
    return true;
  });
  return written && file.commit();
}

}  // namespace quarl::store::sql
