#include <QDir>
#include <QScopeGuard>

#include "store/StoreFixture.h"
#include "store/StoreLocation.h"

namespace quarl::store {
namespace {

/// The location's text, or "error: " and the message. {dir} stands for the folder of the test.
QString Outcome(const StoreFolder& folder, const QString& configFile) {
  QString text;
  try {
    text = StoreLocation::FromEnvironment(configFile).Text();
  } catch (const StoreError& error) {
    text = Q("error: ") + error.Description();
  }
  return text.replace(folder.Path(QString()), Q("{dir}"));
}

TEST(StoreLocationTest, ComesFromTheVariableThenTheFileThenTheDataFolder) {
  const StoreFolder folder;
  const auto restore = qScopeGuard([data = qgetenv("XDG_DATA_HOME")] {
    qunsetenv("QUARL_STORE");
    qputenv("XDG_DATA_HOME", data);
  });
  qputenv("XDG_DATA_HOME", QFile::encodeName(folder.Path(Q("data"))));
  const struct {
    const char* variable;
    const char* file;  // null: missing
    const char* outcome;
  } rows[] = {
      {"sqlite:/a/../b.db", "store = sqlite:/c.db", "sqlite:/b.db"},
      {"sqlite::memory:", nullptr, "sqlite::memory:"},
      {"sqlite:", nullptr, "error: $QUARL_STORE: \"sqlite:\" names no file."},
      {"postgresql://host/db", nullptr, "error: $QUARL_STORE: PostgreSQL stores are not supported by this version."},
      {"/b.db", nullptr, "error: $QUARL_STORE: \"/b.db\" is no location of a store, which is written sqlite:/path."},
      {"", "# ours\n\n  store=sqlite:/c d.db  \n", "sqlite:/c d.db"},
      {"", "store = sqlite:x/e.db", "sqlite:{dir}/x/e.db"},
      {"", "# nothing set\n", "sqlite:{dir}/data/quarl/quarl.db"},
      {"", nullptr, "sqlite:{dir}/data/quarl/quarl.db"},
      {"", "\nstore: x\n",
       "error: {dir}/store.conf, line 2: \"store: x\" is not of the form \"store = sqlite:/path\"."},
      {"",
       "store = ", "error: {dir}/store.conf, line 1: \"\" is no location of a store, which is written sqlite:/path."},
      {"", "store = sqlite:/a\nstore = sqlite:/b", "error: {dir}/store.conf, line 2: the store is set a second time."},
  };
  const QString config = folder.Path(Q("store.conf"));
  for (const auto& row : rows) {
    qputenv("QUARL_STORE", row.variable);
    QFile::remove(config);
    if (row.file) folder.Write(Q("store.conf"), row.file);
    EXPECT_EQ(Outcome(folder, config).toStdString(), row.outcome);
  }
}

TEST(StoreLocationTest, RelativePathsOfTheVariableBeginAtTheCurrentFolder) {
  EXPECT_EQ(StoreLocation::Parse(Q("sqlite:x.db"), QDir::currentPath()).path, QDir::currentPath() + Q("/x.db"));
}

}  // namespace
}  // namespace quarl::store
