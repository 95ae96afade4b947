#include "plugins/contract/CFileVersionInfo.h"

#include <QDir>
#include <QFileInfo>
#include <iterator>
#include <utility>

#include "base/InstallPaths.h"
#include "plugins/contract/LanguageName.h"
#include "plugins/contract/ModuleError.h"
#include "plugins/contract/ModuleFile.h"

namespace quarl::plugins {
namespace {

constexpr quint16 kEnglish = 0x0409;

// The rows of the predefined list behind "Language": display name, key in the file, in the order of Key.
constexpr struct {
  const char* display;
  const char* key;
} kTexts[] = {
    {"Comments", "Comments"},
    {"Company Name", "CompanyName"},
    {"File Description", "FileDescription"},
    {"File Version", "FileVersion"},
    {"Internal Name", "InternalName"},
    {"Legal Copyright", "LegalCopyright"},
    {"Legal Trademarks", "LegalTrademarks"},
    {"Original Filename", "OriginalFilename"},
    {"Product Name", "ProductName"},
    {"Product Version", "ProductVersion"},
    {"Private Build", "PrivateBuild"},
    {"Special Build", "SpecialBuild"},
    {"LegalTrademarks1", "LegalTrademarks1"},
    {"LegalTrademarks2", "LegalTrademarks2"},
};

constexpr std::pair<quint32, const char*> kFlags[] = {
    {1, "Debug "}, {2, "PreRel "}, {4, "Patched "}, {8, "Private "}, {16, "Info "}, {32, "Special "},
};

constexpr std::pair<quint32, const char*> kSystems[] = {
    {0x00010001, "DOS-Win16"},     {0x00010004, "DOS-Win32"}, {0x00020002, "OS/2-16 PM-16"},
    {0x00030003, "OS/2-16 PM-32"}, {0x00040004, "NT-Win32"},
};

constexpr const char* kTypes[] = {"Unknown", "Application", "DLL", "Driver", "Font", "VxD", "Unknown", "Lib"};
constexpr quint32 kDriver = 3;
constexpr quint32 kFont = 4;
constexpr const char* kDrivers[] = {"Unknown",     "Printer drv", "Keyboard drv", "Language drv",
                                    "Display drv", "Mouse drv",   "Network drv",  "System drv",
                                    "Installable", "Sound drv",   "Comm drv"};
constexpr const char* kFonts[] = {nullptr, "Raster Font", "Vector Font", "TrueType Font"};

QString Padded(quint16 number, int width) {
  return QStringLiteral("%1").arg(number, width, 10, QLatin1Char('0'));
}

QString VersionText(const std::array<quint16, 4>& words) {
  const QString tail = words[2] < 1 ? Padded(words[3], 4) : Padded(words[2], 2) + Padded(words[3], 2);
  return QStringLiteral("%1.%2.%3").arg(QString::number(words[0]), Padded(words[1], 2), tail);
}

QString Hex4(quint16 number) {
  return QStringLiteral("%1").arg(number, 4, 16, QLatin1Char('0')).toUpper();
}

QByteArray VersionBytes(const QString& path) {
  try {
    return ModuleFile::Open(path).VersionBlock().toByteArray();
  } catch (const ModuleError&) {
    return {};
  }
}

}  // namespace

void CFileVersionInfo::SetFullPathName(const QString& name) {
  if (name.isEmpty() || name.contains(QChar(u'\0'))) return;
  fullPathName_ = QDir::cleanPath(QFileInfo(InstallPaths::Resolve(name)).absoluteFilePath());
  Refresh();
}

void CFileVersionInfo::Refresh() {
  const QByteArray bytes = VersionBytes(fullPathName_);
  if (bytes.isEmpty()) return;
  available_ = true;
  const VersionBlock block(bytes);
  if (const auto fixed = block.Fixed()) ReadFixed(*fixed);
  ReadTexts(block);
}

void CFileVersionInfo::ReadFixed(const FixedVersion& fixed) {
  verStructure_ = QStringLiteral("%1.%2").arg(fixed.structureHigh).arg(fixed.structureLow);
  verFile_ = VersionText(fixed.file);
  verProduct_ = VersionText(fixed.product);
  fileFlags_.clear();
  for (const auto& [bit, word] : kFlags) {
    if ((fixed.flags & bit) != 0) fileFlags_ += QLatin1String(word);
  }
  fileFlags_ = fileFlags_.trimmed();
  fileOS_ = QStringLiteral("Unknown");
  for (const auto& [word, text] : kSystems) {
    if (fixed.os == word) fileOS_ = QLatin1String(text);
  }
  ReadType(fixed.type, fixed.subtype);
}

/// A subtype without a text leaves the last one standing.
void CFileVersionInfo::ReadType(quint32 type, quint32 subtype) {
  fileType_ = QLatin1String(type < std::size(kTypes) ? kTypes[type] : kTypes[0]);
  if (type == kDriver && subtype < std::size(kDrivers)) fileSubType_ = QLatin1String(kDrivers[subtype]);
  if (type == kFont && subtype > 0 && subtype < std::size(kFonts)) fileSubType_ = QLatin1String(kFonts[subtype]);
}

void CFileVersionInfo::ReadTexts(const VersionBlock& block) {
  const auto translation = block.FirstTranslation();
  if (!translation) return;
  language_ = LanguageName(translation->language);
  const QLatin1String company(kTexts[kCompanyName].key);
  QString table = Hex4(translation->language) + Hex4(translation->codePage);
  texts_[kCompanyName] = block.Text(table, QString(company));
  if (texts_[kCompanyName].isEmpty()) {
    const QString english = Hex4(kEnglish) + Hex4(translation->codePage);
    const QString name = block.Text(english, QString(company));
    if (!name.isEmpty()) {
      table = english;
      texts_[kCompanyName] = name;
    }
  }
  for (size_t key = 0; key < texts_.size(); ++key) {
    if (key != kCompanyName) texts_[key] = block.Text(table, QString(QLatin1String(kTexts[key].key)));
  }
}

QString CFileVersionInfo::PredefinedName(qint32 index) {
  if (index == 0) return QStringLiteral("Language");
  if (index < 0 || index > kKeyCount) return {};
  return QLatin1String(kTexts[index - 1].display);
}

QString CFileVersionInfo::PredefinedValue(qint32 index) const {
  if (index == 0) return language_;
  if (index < 0 || index > kKeyCount) return {};
  return texts_[static_cast<size_t>(index - 1)];
}

}  // namespace quarl::plugins
