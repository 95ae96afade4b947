#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

#include "plugins/contract/ModuleImage.h"

/// Small executable files with any resources, well formed or odd, for the readers to read.
namespace quarl::plugins::build {

/// A block of a version resource. Lengths come from the content unless they are set.
struct VersionNode {
  QString key;
  QByteArray value;
  bool text = false;
  int valueLength = -1;
  std::vector<VersionNode> children;

  QByteArray Bytes() const;
  VersionNode& Child(const QString& name);
};

/// UTF-16 with a NUL at the end.
QByteArray TextBytes(const QString& text);
QByteArray Words(const std::vector<quint32>& words);

struct Fixed {
  quint32 structure = 0x00010000;
  quint32 fileMs = 0x00010002, fileLs = 0x00030004;
  quint32 productMs = 0x00050001, productLs = 0x0a280000;
  quint32 flags = 0, os = 0x00040004, type = 2, subtype = 0;
  QByteArray Bytes() const;
};

/// A usual record: the fixed part, a table under 040904B0 with company "Acme" and product "Widget", its translation.
VersionNode UsualVersion(const Fixed& fixed = {});

struct Resource {
  quint32 type = 0;
  quint32 id = 0;
  QString name;  ///< instead of the id when not empty
  quint32 language = 0;
  QByteArray data;
};

/// A file of the format whose section .rsrc holds the bytes of a tree.
QByteArray FileWithTree(ModuleFormat format, const QByteArray& tree);
/// The tree of some resources, for a file of the format. Resources of one type and name stand together.
QByteArray Tree(ModuleFormat format, const std::vector<Resource>& resources);
QByteArray File(ModuleFormat format, const std::vector<Resource>& resources);

/// A bitmap without file header: 2 by 2 pixels of 24 bits.
QByteArray SmallBitmap();
Resource Icon(const QByteArray& bitmap = SmallBitmap());
Resource Version(const VersionNode& node, quint32 id = 1, quint32 language = 0);

}  // namespace quarl::plugins::build
