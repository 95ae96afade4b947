#pragma once

#include <QByteArray>
#include <QString>

#include "store/sql/WholeFile.h"

class QFile;

namespace quarl::ctl {

/// Writes all bytes to a descriptor. "" or the system's reason why that failed.
QString WriteAll(int descriptor, const QByteArray& bytes);

using Existing = store::sql::WholeFile::Existing;
/// Writes a file whole or not at all, readable by its owner only. A symbolic link is followed. What exists and is no
/// plain file (a device, a pipe) is written to as it is.
/// Throws Error, also for a file that exists and is to be kept; what was there before is there still.
void WriteWholeFile(const QString& path, const QByteArray& bytes, Existing existing);

/// The content of a file. Throws CommandError when it cannot be read whole or holds more than limit bytes.
QByteArray ReadWholeFile(const QString& path, qint64 limit);
/// The same of an open file, from its present place; name is what errors call it.
QByteArray ReadAtMost(QFile& file, const QString& name, qint64 limit);

}  // namespace quarl::ctl
