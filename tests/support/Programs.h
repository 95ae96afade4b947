#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <string>

namespace quarl::testing {

/// Writes lines of a shell as a program, and gives its path.
inline std::string WriteScript(const QString& path, const std::string& lines) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
  file.write(QByteArray::fromStdString("#!/bin/sh\n" + lines + "\n"));
  file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  return path.toStdString();
}

/// The processes of this machine whose command line has a text.
inline int CountProcesses(const QByteArray& text) {
  int count = 0;
  for (const QString& entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
    QFile line(QStringLiteral("/proc/%1/cmdline").arg(entry));
    if (line.open(QIODevice::ReadOnly) && line.readAll().contains(text)) ++count;
  }
  return count;
}

}  // namespace quarl::testing
