#include "plugins/HostFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>

namespace quarl::plugins {

HostFolder::HostFolder() {
  const QDir layout(QStringLiteral(QUARL_LAYOUT_DIR));
  const QDir probes(QStringLiteral(QUARL_PROBES_DIR));
  EXPECT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("plugins/tests")));
  for (const char* file : {"quarl-modulehost", "TestHelper.dll", "AlertHelper.dll"}) {
    EXPECT_TRUE(QFile::copy(layout.filePath(QString::fromLatin1(file)), Path(QString::fromLatin1(file)))) << file;
  }
  for (const QString& probe : probes.entryList({QStringLiteral("probe*.dll")})) {
    EXPECT_TRUE(QFile::link(probes.filePath(probe), Path(QStringLiteral("plugins/tests/") + probe)));
  }
  EXPECT_TRUE(QFile::link(probes.filePath(QStringLiteral("probe_forms.dll")), Path(QStringLiteral("quarl-forms.so"))));
}

QString HostFolder::Module(const char* name) const {
  return folder_.path() + QStringLiteral("\\plugins\\Tests\\") + QString::fromLatin1(name);
}

void HostFolder::Remove(const QString& name) const {
  EXPECT_TRUE(QFile::remove(Path(name))) << name.toStdString();
}

void HostFolder::WriteModule(const char* name, const QByteArray& bytes) const {
  QFile file(Path(QStringLiteral("plugins/tests/") + QString::fromLatin1(name)));
  EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

QString HostFolder::MakePipe() {
  const QString path = folder_.filePath(QStringLiteral("pipe%1").arg(++pipes_));
  EXPECT_EQ(mkfifo(path.toLocal8Bit().constData(), 0600), 0);
  return path;
}

}  // namespace quarl::plugins
