#include "plugins/contract/VersionBlock.h"

#include <QtEndian>
#include <algorithm>

namespace quarl::plugins {
namespace {

constexpr qsizetype kNodeHeader = 6;  // three words: length, length of the value, whether the value is text
constexpr qsizetype kFixedBytes = 52;

constexpr qsizetype Aligned(qsizetype offset) {
  return (offset + 3) & ~qsizetype{3};
}

}  // namespace

quint16 VersionBlock::U16(qsizetype offset) const {
  return qFromLittleEndian<quint16>(bytes_.data() + offset);
}

quint32 VersionBlock::U32(qsizetype offset) const {
  return qFromLittleEndian<quint32>(bytes_.data() + offset);
}

/// The units up to the first NUL or the end, whichever comes first. A lone surrogate becomes the replacement mark.
QString VersionBlock::TextAt(qsizetype begin, qsizetype end) const {
  QString text;
  for (qsizetype at = begin; at + 2 <= end; at += 2) {
    const quint16 unit = U16(at);
    if (unit == 0) break;
    text.append(QChar(unit));
  }
  return text.isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
}

std::optional<VersionBlock::Node> VersionBlock::NodeAt(qsizetype begin, qsizetype limit) const {
  if (limit - begin < kNodeHeader + 2) return std::nullopt;
  const qsizetype length = U16(begin);
  if (length < kNodeHeader + 2) return std::nullopt;
  Node node;
  node.end = std::min(begin + length, limit);
  qsizetype nameEnd = begin + kNodeHeader;
  while (nameEnd + 2 <= node.end && U16(nameEnd) != 0) nameEnd += 2;
  if (nameEnd + 2 > node.end) return std::nullopt;
  node.name = TextAt(begin + kNodeHeader, nameEnd);
  node.value = std::min(Aligned(nameEnd + 2), node.end);
  // Texts count characters, but some writers count bytes: a text is read to its NUL and never has children.
  const qsizetype valueLength = U16(begin + 2);
  node.valueEnd = std::min(node.value + valueLength, node.end);
  node.children = std::min(Aligned(node.valueEnd), node.end);
  return node;
}

std::optional<VersionBlock::Node> VersionBlock::Child(const Node& parent, QStringView name) const {
  qsizetype at = parent.children;
  while (auto node = NodeAt(at, parent.end)) {
    if (name.compare(node->name, Qt::CaseInsensitive) == 0) return node;
    at = Aligned(node->end);
  }
  return std::nullopt;
}

std::optional<VersionBlock::Node> VersionBlock::Find(std::initializer_list<QStringView> path) const {
  auto node = NodeAt(0, bytes_.size());
  for (const QStringView name : path) {
    if (!node) break;
    node = Child(*node, name);
  }
  return node;
}

std::optional<FixedVersion> VersionBlock::Fixed() const {
  const auto root = NodeAt(0, bytes_.size());
  if (!root || root->valueEnd - root->value < kFixedBytes) return std::nullopt;
  const qsizetype at = root->value;
  FixedVersion fixed;
  fixed.structureLow = U16(at + 4);
  fixed.structureHigh = U16(at + 6);
  for (size_t i = 0; i < fixed.file.size(); ++i) {
    const auto word = 2 * static_cast<qsizetype>(i ^ 1);  // each pair stands low word first
    fixed.file[i] = U16(at + 8 + word);
    fixed.product[i] = U16(at + 16 + word);
  }
  fixed.flags = U32(at + 28);
  fixed.os = U32(at + 32);
  fixed.type = U32(at + 36);
  fixed.subtype = U32(at + 40);
  return fixed;
}

std::optional<Translation> VersionBlock::FirstTranslation() const {
  const auto node = Find({u"VarFileInfo", u"Translation"});
  if (!node || node->valueEnd - node->value < 4) return std::nullopt;
  return Translation{U16(node->value), U16(node->value + 2)};
}

QString VersionBlock::Text(QStringView table, QStringView key) const {
  const auto node = Find({u"StringFileInfo", table, key});
  return !node || node->value == node->valueEnd ? QString() : TextAt(node->value, node->end);
}

}  // namespace quarl::plugins
