#include "base/StringTable.h"

#include <QFile>
#include <QHash>

#include "base/Error.h"

// A resource in a static library is only linked in when something names its initialiser.
static void InitialiseStrings() {
  Q_INIT_RESOURCE(strings);
}

namespace quarl {
namespace {

QHash<int, QString> ReadTable() {
  InitialiseStrings();
  QFile file(QStringLiteral(":/quarl/strings/strings.tsv"));
  QHash<int, QString> table;
  if (!file.open(QIODevice::ReadOnly)) return table;
  const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
  for (const QString& line : lines) {
    const qsizetype tab = line.indexOf(u'\t');
    table.insert(line.left(tab).toInt(), line.mid(tab + 1));
  }
  return table;
}

}  // namespace

QString LoadText(Text id) {
  static const QHash<int, QString> table = ReadTable();
  const auto entry = table.constFind(static_cast<int>(id));
  if (entry == table.constEnd()) {
    throw Error(QStringLiteral("The string table has no entry %1.").arg(static_cast<int>(id)));
  }
  return *entry;
}

}  // namespace quarl
