#include "store/StoreFixture.h"

#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quarl::store {

StoreFolder::StoreFolder() {
  EXPECT_TRUE(folder_.isValid());
}

SqlSetup StoreFolder::Setup(const StoreLocation& location) const {
  SqlSetup setup{location, Paths(), {}, nullptr, &clock};
  setup.inspector = [](const QString& path) {
    return BytesOf(path).startsWith("MODULE") ? QString() : QStringLiteral("no module");
  };
  setup.busyTimeoutMs = 50;
  return setup;
}

QString StoreFolder::Write(const QString& name, const QByteArray& content) const {
  const QString path = Path(name);
  EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
  EXPECT_EQ(file.write(content), content.size());
  return path;
}

qint32 StoreFolder::AddTestType(Stores& stores, const QString& name) const {
  const QString module = Write(QStringLiteral("from/%1.dll").arg(name), "MODULE " + name.toUtf8());
  EXPECT_TRUE(stores.System().AddTestType(module, name));
  return Column(stores.System().GetTestTypes(), "IDTestType").split(u' ').last().toInt();
}

qint32 StoreFolder::AddAlertType(Stores& stores, const QString& name) const {
  const QString module = Write(QStringLiteral("from/%1.dll").arg(name), "MODULE " + name.toUtf8());
  EXPECT_TRUE(stores.System().AddAlertType(module, name));
  return Column(stores.System().GetAlertTypes(), "IDAlertType").split(u' ').last().toInt();
}

QString Column(RecordSet rows, const char* field) {
  QStringList values;
  for (; !rows.Eof(); rows.MoveNext()) {
    const QVariant value = rows.Value(field);
    values.append(value.isValid() ? value.toString() : QStringLiteral("-"));
  }
  return values.join(u' ');
}

QByteArray BytesOf(const QString& path) {
  QFile file(path);
  if (!QFileInfo(path).isFile()) return {};  // reading a pipe would never end
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void RunSql(const QString& path, const QByteArray& sql) {
  std::ignore = AskSql(path, sql);
}

QString AskSql(const QString& path, const QByteArray& sql) {
  sqlite3* handle = nullptr;
  EXPECT_EQ(sqlite3_open_v2(QFile::encodeName(path).constData(), &handle, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  QString value;
  char* message = nullptr;
  const auto keep = [](void* target, int count, char** texts, char** /*names*/) {
    auto* first = static_cast<QString*>(target);
    if (count > 0 && first->isEmpty()) *first = QString::fromUtf8(texts[0]);
    return 0;
  };
  EXPECT_EQ(sqlite3_exec(handle, sql.constData(), keep, &value, &message), SQLITE_OK) << (message ? message : "");
  sqlite3_free(message);
  sqlite3_close(handle);
  return value;
}

QString ErrorOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const StoreError& error) {
    return error.Description();
  }
  return {};
}

}  // namespace quarl::store
