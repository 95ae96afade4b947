#include "store/sql/ModuleInstaller.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

#include "store/sql/SqlError.h"

namespace quarl::store::sql {
namespace {

constexpr qint64 kBlock = 1 << 20;

/// Opens what is a file and no device or pipe, on which reading might never end.
bool OpenForReading(QFile& file) {
  return QFileInfo(file.fileName()).isFile() && file.open(QIODevice::ReadOnly);
}

bool HaveSameBytes(const QString& a, const QString& b) {
  QFile first(a);
  QFile second(b);
  if (!OpenForReading(first) || !OpenForReading(second) || first.size() != second.size()) return false;
  for (;;) {
    const QByteArray left = first.read(kBlock);
    const QByteArray right = second.read(kBlock);
    if (left != right || first.error() != QFile::NoError || second.error() != QFile::NoError) return false;
    if (left.isEmpty()) return true;
  }
}

/// The entry of a folder that has this name, in whatever case; the exact one before others. "" = none.
QString EntryNamed(const QString& folder, const QString& name) {
  const QStringList entries =
      QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
  QString found;
  for (const QString& entry : entries) {
    if (entry == name) return entry;
    if (entry.compare(name, Qt::CaseInsensitive) == 0) found = entry;
  }
  return found;
}

[[noreturn]] void ThrowNotCopied(const QString& name, const QString& folder, const QString& reason) {
  throw SqlError(Fault::Other, QStringLiteral("The module %1 cannot be copied to %2: %3.").arg(name, folder, reason));
}

}  // namespace

QString ModuleNameFault(const QString& name) {
  constexpr qsizetype kLongest = 255;
  if (name.isEmpty()) return QStringLiteral("it has no module file name");
  if (name == QLatin1String(".") || name == QLatin1String("..") || name.contains(u'/') || name.contains(u'\\') ||
      name.contains(QChar::Null)) {
    return QStringLiteral("\"%1\" is no file name").arg(name.left(200));
  }
  if (QFile::encodeName(name).size() > kLongest) {
    return QStringLiteral("the module file name \"%1...\" is too long").arg(name.left(40));
  }
  return {};
}

ModuleInstaller::ModuleInstaller(QString folder, const ModuleInspector& inspector)
    : folder_(std::move(folder)), inspector_(inspector) {}

ModuleInstaller::~ModuleInstaller() {
  if (!copy_.isEmpty()) QFile::remove(copy_);
}

bool ModuleInstaller::Prepare(const QString& moduleFile) {
  name_ = moduleFile.mid(moduleFile.lastIndexOf(u'/') + 1);
  if (!inspector_ || moduleFile.contains(QChar::Null) || !ModuleNameFault(name_).isEmpty()) return false;
  const QString present = EntryNamed(folder_, name_);
  if (present.isEmpty()) {
    // The inspector knows how large a module may be: nothing larger is copied. It looks again at what was copied.
    return QFileInfo(moduleFile).isFile() && inspector_(moduleFile).isEmpty() && Copy(moduleFile) &&
           inspector_(pending_->Path()).isEmpty();
  }
  name_ = present;
  const QString place = folder_ + u'/' + present;
  return HaveSameBytes(moduleFile, place) && inspector_(place).isEmpty();
}

bool ModuleInstaller::Copy(const QString& source) {
  QFile from(source);
  if (!OpenForReading(from)) return false;
  if (!QDir().mkpath(folder_)) ThrowNotCopied(name_, folder_, QStringLiteral("the folder cannot be made"));
  pending_.emplace(folder_ + u'/' + name_, QStringLiteral("The module %1 cannot be copied to %2").arg(name_, folder_));
  QFile to(pending_->Path());
  if (!to.open(QIODevice::WriteOnly)) ThrowNotCopied(name_, folder_, to.errorString());
  for (qint64 left = from.size(); left > 0;) {
    const QByteArray block = from.read(std::min(left, kBlock));
    if (from.error() != QFile::NoError || block.isEmpty()) return false;
    if (to.write(block) != block.size()) ThrowNotCopied(name_, folder_, to.errorString());
    left -= block.size();
  }
  if (!to.flush()) ThrowNotCopied(name_, folder_, to.errorString());
  ::fsync(to.handle());  // slow now, so that it is quick under the lock, where a failure is found
  to.close();
  ::chmod(QFile::encodeName(pending_->Path()).constData(), S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
  return true;
}

bool ModuleInstaller::Install() {
  if (!pending_) return true;
  if (!EntryNamed(folder_, name_).isEmpty() || !pending_->Publish(WholeFile::Existing::Keep)) return false;
  copy_ = folder_ + u'/' + name_;
  return true;
}

}  // namespace quarl::store::sql
