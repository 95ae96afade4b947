#pragma once

#include <QByteArrayView>
#include <QString>
#include <array>
#include <initializer_list>
#include <optional>

namespace quarl::plugins {

/// The fixed part of a version resource, words as they stand.
struct FixedVersion {
  quint16 structureHigh = 0, structureLow = 0;
  std::array<quint16, 4> file = {};     ///< most significant first
  std::array<quint16, 4> product = {};  ///< most significant first
  quint32 flags = 0;
  quint32 os = 0;
  quint32 type = 0;
  quint32 subtype = 0;
};

struct Translation {
  quint16 language = 0;
  quint16 codePage = 0;
};

/// A version resource: a tree of blocks with a name, a value and children, at most 64 KB. What is damaged reads as
/// absent. The bytes must outlive it.
class VersionBlock {
 public:
  explicit VersionBlock(QByteArrayView bytes) : bytes_(bytes) {}

  /// Nothing when the fixed part is not there or shorter than its 52 bytes.
  std::optional<FixedVersion> Fixed() const;
  /// The first translation; nothing when there is none.
  std::optional<Translation> FirstTranslation() const;
  /// The text of StringFileInfo \ table \ key, up to its first NUL; "" when there is none. Names compare without case.
  QString Text(QStringView table, QStringView key) const;

 private:
  struct Node {
    QString name;
    qsizetype value = 0;
    qsizetype valueEnd = 0;
    qsizetype children = 0;
    qsizetype end = 0;
  };

  std::optional<Node> NodeAt(qsizetype begin, qsizetype limit) const;
  std::optional<Node> Find(std::initializer_list<QStringView> path) const;
  std::optional<Node> Child(const Node& parent, QStringView name) const;
  QString TextAt(qsizetype begin, qsizetype end) const;
  quint16 U16(qsizetype offset) const;
  quint32 U32(qsizetype offset) const;

  QByteArrayView bytes_;
};

}  // namespace quarl::plugins
