#include "base/InstallPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include "base/Error.h"

namespace quarl {
namespace {

QString EntryOf(const QString& folder, const QString& part) {
  if (part == QLatin1String(".") || part == QLatin1String("..")) return part;
  if (QFileInfo::exists(folder + u'/' + part)) return part;
  const QStringList entries =
      QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
  QString found;
  for (const QString& entry : entries) {
    if (entry.compare(part, Qt::CaseInsensitive) != 0) continue;
    if (!found.isEmpty()) return part;
    found = entry;
  }
  return found.isEmpty() ? part : found;
}

QString FolderText(ModuleCallSite site, ModuleKind kind) {
  if (kind == ModuleKind::Test) {
    return site == ModuleCallSite::BufferSize ? QStringLiteral("\\plugins\\Tests\\")
                                              : QStringLiteral("\\plugins\\tests\\");
  }
  return site == ModuleCallSite::About ? QStringLiteral("\\plugins\\alerts\\") : QStringLiteral("\\plugins\\Alerts\\");
}

bool IsFileName(const QString& name) {
  if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")) return false;
  return !name.contains(u'/') && !name.contains(u'\\') && !name.contains(QChar(u'\0'));
}

}  // namespace

InstallPaths::InstallPaths(QString applicationFolder) : applicationFolder_(std::move(applicationFolder)) {}

InstallPaths InstallPaths::OfThisProgram() {
  // The application object need not be there yet.
  const QString self = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
  return InstallPaths(self.isEmpty() ? QCoreApplication::applicationDirPath() : QFileInfo(self).path());
}

QString InstallPaths::ModuleFolder(ModuleKind kind) const {
  return applicationFolder_ +
         (kind == ModuleKind::Test ? QStringLiteral("/plugins/tests") : QStringLiteral("/plugins/alerts"));
}

QString InstallPaths::ModulePath(const QString& baseFolder, ModuleCallSite site, ModuleKind kind,
                                 const QString& moduleFile) {
  if (!IsFileName(moduleFile)) {
    throw Error(QStringLiteral("\"%1\" is not the file name of a module.").arg(moduleFile));
  }
  return baseFolder + FolderText(site, kind) + moduleFile;
}

QString InstallPaths::Resolve(const QString& path) {
  QString text = path;
  text.replace(u'\\', u'/');
  if (QFileInfo::exists(text)) return text;
  const bool absolute = text.startsWith(u'/');
  QString resolved;
  const QStringList parts = text.split(u'/', Qt::SkipEmptyParts);
  for (const QString& part : parts) {
    const QString folder = resolved.isEmpty() ? (absolute ? QStringLiteral("/") : QStringLiteral(".")) : resolved;
    const QString entry = EntryOf(folder, part);
    if (resolved.isEmpty()) {
      resolved = absolute ? u'/' + entry : entry;
    } else {
      resolved += u'/' + entry;
    }
  }
  return resolved;
}

}  // namespace quarl
