#include "plugins/contract/ResourceTree.h"

#include <QtEndian>
#include <algorithm>
#include <vector>

#include "plugins/contract/ByteReader.h"
#include "plugins/contract/ModuleError.h"

namespace quarl::plugins {
namespace {

constexpr quint32 kHighBit = 0x80000000U;
constexpr quint32 kEnglish = 0x0409;

struct Entry {
  quint32 name = 0;    // an id, or with the high bit the offset of a text
  quint32 target = 0;  // offset of a data entry, or with the high bit of a directory
};

ByteReader Reader(const ModuleImage& image) {
  return {image.resources, QStringLiteral("its resources")};
}

std::vector<Entry> EntriesAt(const ByteReader& tree, quint32 directory) {
  const quint32 count = quint32{tree.U16(directory + 12ULL)} + tree.U16(directory + 14ULL);
  const ByteReader table(tree.Slice(directory + 16ULL, count * 8ULL), QStringLiteral("its resources"));
  std::vector<Entry> entries;
  entries.reserve(count);
  for (quint32 i = 0; i < count; ++i) entries.push_back({table.U32(i * 8ULL), table.U32(i * 8ULL + 4)});
  return entries;
}

/// Where the directory of an entry stands. Throws for an entry that is data where a directory is due.
quint32 DirectoryOf(const Entry& entry) {
  if ((entry.target & kHighBit) != 0) return entry.target & ~kHighBit;
  throw ModuleError(QStringLiteral("The file is damaged: its resources are not in order."));
}

std::optional<Entry> EntryWithId(const std::vector<Entry>& entries, quint32 id) {
  const auto found = std::find_if(entries.begin(), entries.end(), [id](const Entry& e) { return e.name == id; });
  return found == entries.end() ? std::nullopt : std::optional(*found);
}

bool HasText(const ByteReader& tree, const Entry& entry, QStringView text) {
  if ((entry.name & kHighBit) == 0) return false;
  const quint64 at = entry.name & ~kHighBit;
  if (tree.U16(at) != text.size()) return false;
  const QByteArrayView units = tree.Slice(at + 2, static_cast<quint64>(text.size()) * 2);
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (qFromLittleEndian<quint16>(units.data() + i * 2) != text.at(i).unicode()) return false;
  }
  return true;
}

std::optional<Entry> PreferredLanguage(const std::vector<Entry>& entries) {
  for (const quint32 language : {0U, kEnglish}) {
    if (const auto entry = EntryWithId(entries, language)) return entry;
  }
  const auto lowest =
      std::min_element(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
  return lowest == entries.end() ? std::nullopt : std::optional(*lowest);
}

QByteArrayView DataOf(const ModuleImage& image, const ByteReader& tree, const Entry& name) {
  const auto language = PreferredLanguage(EntriesAt(tree, DirectoryOf(name)));
  if (!language || (language->target & kHighBit) != 0) {
    throw ModuleError(QStringLiteral("The file is damaged: its resources are not in order."));
  }
  return image.DataAt(tree.U32(language->target), tree.U32(language->target + 4ULL));
}

std::vector<Entry> NamesOf(const ByteReader& tree, quint32 type) {
  const auto entry = EntryWithId(EntriesAt(tree, 0), type);
  return entry ? EntriesAt(tree, DirectoryOf(*entry)) : std::vector<Entry>();
}

}  // namespace

std::optional<QByteArrayView> ResourceTree::Find(quint32 type, quint32 id) const {
  if (image_.resources.isEmpty()) return std::nullopt;
  const ByteReader tree = Reader(image_);
  const auto name = EntryWithId(NamesOf(tree, type), id);
  return name ? std::optional(DataOf(image_, tree, *name)) : std::nullopt;
}

std::optional<QByteArrayView> ResourceTree::Find(quint32 type, QStringView name) const {
  if (image_.resources.isEmpty()) return std::nullopt;
  const ByteReader tree = Reader(image_);
  for (const Entry& entry : NamesOf(tree, type)) {
    if (HasText(tree, entry, name)) return DataOf(image_, tree, entry);
  }
  return std::nullopt;
}

}  // namespace quarl::plugins
