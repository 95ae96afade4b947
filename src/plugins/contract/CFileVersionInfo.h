#pragma once

#include <QString>
#include <array>

#include "plugins/contract/VersionBlock.h"

namespace quarl::plugins {

/// The version information of a module's file. Setting the file name reads it all; the other properties return what
/// the last read stored. A file without version information leaves everything as it was, and nothing is ever reported.
class CFileVersionInfo {
 public:
  /// Takes the absolute native path of the name ("\" separates like "/", case is forgiven) and reads the file.
  /// A name that stands for no path (empty, or with a NUL inside) changes nothing.
  void SetFullPathName(const QString& name);
  const QString& FullPathName() const { return fullPathName_; }
  /// Reads the file of FullPathName() again.
  void Refresh();

  /// True once a file with version information was read.
  bool Available() const { return available_; }
  /// "high.low" of the record's own version.
  const QString& VerStructure() const { return verStructure_; }
  /// 1.2.3.4 reads "1.02.0304", 1.2.0.4 reads "1.02.0004".
  const QString& VerFile() const { return verFile_; }
  const QString& VerProduct() const { return verProduct_; }
  /// Words such as "Debug PreRel".
  const QString& FileFlags() const { return fileFlags_; }
  const QString& FileOS() const { return fileOS_; }
  const QString& FileType() const { return fileType_; }
  const QString& FileSubType() const { return fileSubType_; }
  const QString& Language() const { return language_; }

  const QString& Comments() const { return texts_[kComments]; }
  const QString& CompanyName() const { return texts_[kCompanyName]; }
  const QString& FileDescription() const { return texts_[kFileDescription]; }
  const QString& FileVersion() const { return texts_[kFileVersion]; }
  const QString& InternalName() const { return texts_[kInternalName]; }
  const QString& LegalCopyright() const { return texts_[kLegalCopyright]; }
  const QString& LegalTrademarks() const { return texts_[kLegalTrademarks]; }
  const QString& OriginalFilename() const { return texts_[kOriginalFilename]; }
  const QString& ProductName() const { return texts_[kProductName]; }
  const QString& ProductVersion() const { return texts_[kProductVersion]; }
  const QString& PrivateBuild() const { return texts_[kPrivateBuild]; }
  const QString& SpecialBuild() const { return texts_[kSpecialBuild]; }

  /// Display name and value of a row of the predefined list (0 "Language" to 14 "LegalTrademarks2"); "" for any
  /// other index.
  static QString PredefinedName(qint32 index);
  QString PredefinedValue(qint32 index) const;

 private:
  enum Key : quint8 {
    kComments,
    kCompanyName,
    kFileDescription,
    kFileVersion,
    kInternalName,
    kLegalCopyright,
    kLegalTrademarks,
    kOriginalFilename,
    kProductName,
    kProductVersion,
    kPrivateBuild,
    kSpecialBuild,
    kLegalTrademarks1,
    kLegalTrademarks2,
    kKeyCount
  };

  void ReadFixed(const FixedVersion& fixed);
  void ReadType(quint32 type, quint32 subtype);
  void ReadTexts(const VersionBlock& block);

  QString fullPathName_;
  bool available_ = false;
  QString verStructure_;
  QString verFile_;
  QString verProduct_;
  QString fileFlags_;
  QString fileOS_;
  QString fileType_;
  QString fileSubType_;
  QString language_;
  std::array<QString, kKeyCount> texts_;
};

}  // namespace quarl::plugins
