#include "store/StoreFixture.h"

#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <array>

namespace quarl::store {

StoreFolder::StoreFolder() {
  EXPECT_TRUE(folder_.isValid());
}

SqlSetup StoreFolder::Setup(const StoreLocation& location) const {
  SqlSetup setup{location, Paths(), {}, nullptr, &clock};
  setup.inspector = [](const QString& path) { return BytesOf(path).startsWith("MODULE") ? QString() : Q("no module"); };
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
  const QString module = Write(Q("from/%1.dll").arg(name), "MODULE " + name.toUtf8());
  EXPECT_TRUE(stores.System().AddTestType(module, name));
  return Column(stores.System().GetTestTypes(), "IDTestType").split(u' ').last().toInt();
}

qint32 StoreFolder::AddAlertType(Stores& stores, const QString& name) const {
  const QString module = Write(Q("from/%1.dll").arg(name), "MODULE " + name.toUtf8());
  EXPECT_TRUE(stores.System().AddAlertType(module, name));
  return Column(stores.System().GetAlertTypes(), "IDAlertType").split(u' ').last().toInt();
}

EngineTest::EngineTest()
    : writer_(folder_.Setup(GetParam() == Engine::Memory ? StoreLocation::InMemory()
                                                         : StoreLocation::File(folder_.StorePath()))),
      second_(folder_.Setup()) {}

std::string EngineTest::NameOf(const ::testing::TestParamInfo<Engine>& engine) {
  constexpr std::array kNames{"Memory", "File", "TwoUsers"};
  return kNames.at(static_cast<std::size_t>(engine.param));
}

QString Column(RecordSet rows, const char* field) {
  QStringList values;
  for (; !rows.Eof(); rows.MoveNext()) {
    const QVariant value = rows.Value(field);
    values.append(value.isValid() ? value.toString() : Q("-"));
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

void Patch(const QString& path, qint64 at, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(at));
  ASSERT_EQ(file.write(bytes), bytes.size());
}

qint64 PlaceOfLog(const QString& path) {
  const int page = AskSql(path, "SELECT rootpage FROM sqlite_schema WHERE name = 'log_records'").toInt();
  return (page - 1) * qint64{4096};
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
