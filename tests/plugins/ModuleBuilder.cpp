#include "plugins/ModuleBuilder.h"

#include <QtEndian>
#include <array>
#include <map>

namespace quarl::plugins::build {
namespace {

constexpr quint32 kHighBit = 0x80000000U;
constexpr quint32 kPeAddress = 0x1000;

void Put16(QByteArray& out, quint32 value) {
  out.append(static_cast<char>(value & 0xff)).append(static_cast<char>(value >> 8 & 0xff));
}

void Put32(QByteArray& out, quint32 value) {
  Put16(out, value & 0xffff);
  Put16(out, value >> 16);
}

void Align(QByteArray& out, qsizetype multiple) {
  out.append((multiple - out.size() % multiple) % multiple, '\0');
}

bool IsPe(ModuleFormat format) {
  return format == ModuleFormat::Pe32 || format == ModuleFormat::Pe32Plus;
}

QByteArray PeFile(bool wide, const QByteArray& tree) {
  const int optional = wide ? 240 : 224;
  QByteArray out("MZ");
  out.append(0x3c - 2, '\0');
  Put32(out, 0x40);
  out.append("PE\0\0", 4);
  Put16(out, wide ? 0x8664 : 0x14c);
  Put16(out, 1);
  out.append(12, '\0');
  Put16(out, static_cast<quint32>(optional));
  Put16(out, 0x2002);
  QByteArray header(optional, '\0');
  qToLittleEndian<quint16>(wide ? 0x20b : 0x10b, header.data());
  qToLittleEndian<quint32>(0x200, header.data() + 60);
  qToLittleEndian<quint32>(16, header.data() + (wide ? 108 : 92));
  qToLittleEndian<quint32>(kPeAddress, header.data() + (wide ? 112 : 96) + 16);
  out += header;
  out.append(".rsrc\0\0\0", 8);
  for (const quint32 word : {quint32(tree.size()), kPeAddress, quint32(tree.size()), 0x200U, 0U, 0U, 0U, 0U}) {
    Put32(out, word);
  }
  out.append(0x200 - out.size(), '\0');
  return out + tree;
}

QByteArray ElfFile(bool wide, const QByteArray& tree) {
  QByteArray out(
      "\x7f"
      "ELF");
  const auto word = [&](quint32 value) {
    Put32(out, value);
    if (wide) Put32(out, 0);
  };
  const quint32 header = wide ? 64 : 52;
  const quint32 program = wide ? 56 : 32;
  const quint32 section = wide ? 64 : 40;
  const quint32 dynamic = header + program;
  const quint32 names = dynamic + 16;
  const quint32 data = names + 32;
  const auto sections = (data + static_cast<quint32>(tree.size()) + 7) / 8 * 8;
  out.append(wide ? '\2' : '\1').append('\1').append('\1').append(9, '\0');
  Put16(out, 3);
  Put16(out, wide ? 62 : 3);
  Put32(out, 1);
  word(0);
  word(header);
  word(sections);
  Put32(out, 0);
  for (const quint32 value : {header, program, 1U, section, 3U, 2U}) Put16(out, value);
  Put32(out, 2);  // the dynamic table: one empty entry
  if (wide) Put32(out, 0);
  for (const quint32 value : {dynamic, 0U, 0U, 16U, 16U}) word(value);
  if (!wide) Put32(out, 0);
  word(8);
  out.append(16, '\0');
  out.append("\0.rsrc\0.names\0", 14).append(18, '\0');
  out += tree;
  Align(out, 8);
  out.append(section, '\0');
  for (const auto& [name, type, offset, size] :
       {std::array{1U, 1U, data, static_cast<quint32>(tree.size())}, {7U, 3U, names, 14U}}) {
    Put32(out, name);
    Put32(out, type);
    for (const quint32 value : {0U, 0U, offset, size}) word(value);
    out.append(8, '\0');
    word(0);
    word(0);
  }
  return out;
}

using Languages = std::map<quint32, QByteArray>;
using Names = std::map<std::pair<quint32, QString>, Languages>;

/// Writes depth first; the entries of a directory are filled in when what they name is written.
class TreeWriter {
 public:
  explicit TreeWriter(quint32 base) : base_(base) {}

  const QByteArray& Out() const { return out_; }
  quint32 At() const { return static_cast<quint32>(out_.size()); }

  /// The offset of its first entry.
  qsizetype Directory(size_t named, size_t numbered) {
    out_.append(12, '\0');
    Put16(out_, static_cast<quint32>(named));
    Put16(out_, static_cast<quint32>(numbered));
    const qsizetype entries = out_.size();
    out_.append(static_cast<qsizetype>(named + numbered) * 8, '\0');
    return entries;
  }

  void Entry(qsizetype& at, quint32 name, quint32 target) {
    qToLittleEndian(name, out_.data() + at);
    qToLittleEndian(target, out_.data() + at + 4);
    at += 8;
  }

  void WriteNames(const Names& names) {
    size_t named = 0;
    for (const auto& [name, languages] : names) named += name.second.isEmpty() ? 0 : 1;
    qsizetype entry = Directory(named, names.size() - named);
    for (const auto& [name, languages] : names) {
      const quint32 key = name.second.isEmpty() ? name.first : kHighBit | WriteText(name.second);
      Entry(entry, key, kHighBit | At());
      WriteLanguages(languages);
    }
  }

 private:
  quint32 WriteText(const QString& text) {
    const quint32 at = At();
    Put16(out_, static_cast<quint32>(text.size()));
    out_ += build::TextBytes(text);
    Align(out_, 8);
    return at;
  }

  void WriteLanguages(const Languages& languages) {
    qsizetype entry = Directory(0, languages.size());
    for (const auto& [language, data] : languages) {
      Entry(entry, language, At());
      for (const quint32 word : {base_ + At() + 16, static_cast<quint32>(data.size()), 0U, 0U}) Put32(out_, word);
      out_ += data;
      Align(out_, 8);
    }
  }

  quint32 base_;
  QByteArray out_;
};

}  // namespace

QByteArray TextBytes(const QString& text) {
  QByteArray out;
  for (const QChar unit : text) Put16(out, unit.unicode());
  Put16(out, 0);
  return out;
}

QByteArray Words(const std::vector<quint32>& words) {
  QByteArray out;
  for (const quint32 word : words) Put32(out, word);
  return out;
}

QByteArray Fixed::Bytes() const {
  return Words({0xfeef04bd, structure, fileMs, fileLs, productMs, productLs, 0x3f, flags, os, type, subtype, 0, 0});
}

QByteArray VersionNode::Bytes() const {
  QByteArray out(6, '\0');
  out += TextBytes(key);
  Align(out, 4);
  out += value;
  for (const VersionNode& child : children) {
    Align(out, 4);
    out += child.Bytes();
  }
  const qsizetype length = valueLength >= 0 ? valueLength : (text ? value.size() / 2 : value.size());
  qToLittleEndian(static_cast<quint16>(out.size()), out.data());
  qToLittleEndian(static_cast<quint16>(length), out.data() + 2);
  qToLittleEndian(static_cast<quint16>(text ? 1 : 0), out.data() + 4);
  return out;
}

VersionNode& VersionNode::Child(const QString& name) {
  for (VersionNode& child : children) {
    if (child.key == name) return child;
  }
  children.push_back({name, {}, false, -1, {}});
  return children.back();
}

VersionNode UsualVersion(const Fixed& fixed) {
  const auto text = [](const char* key, const char* value) {
    return VersionNode{QString::fromLatin1(key), TextBytes(QString::fromUtf8(value)), true, -1, {}};
  };
  VersionNode root{QStringLiteral("VS_VERSION_INFO"), fixed.Bytes(), false, -1, {}};
  VersionNode& strings = root.Child(QStringLiteral("StringFileInfo"));
  strings.Child(QStringLiteral("040904B0")).children = {text("CompanyName", "Acme"), text("ProductName", "Widget")};
  root.Child(QStringLiteral("VarFileInfo")).Child(QStringLiteral("Translation")).value = Words({0x04b00409});
  return root;
}

QByteArray FileWithTree(ModuleFormat format, const QByteArray& tree) {
  return IsPe(format) ? PeFile(format == ModuleFormat::Pe32Plus, tree) : ElfFile(format == ModuleFormat::Elf64, tree);
}

QByteArray Tree(ModuleFormat format, const std::vector<Resource>& resources) {
  std::map<quint32, Names> types;
  for (const Resource& resource : resources) {
    types[resource.type][{resource.id, resource.name}][resource.language] = resource.data;
  }
  TreeWriter writer(IsPe(format) ? kPeAddress : 0);
  qsizetype entry = writer.Directory(0, types.size());
  for (const auto& [type, names] : types) {
    writer.Entry(entry, type, kHighBit | writer.At());
    writer.WriteNames(names);
  }
  return writer.Out();
}

QByteArray File(ModuleFormat format, const std::vector<Resource>& resources) {
  return FileWithTree(format, Tree(format, resources));
}

QByteArray SmallBitmap() {
  return Words({40, 2, 2, 0x00180001, 0, 0, 0, 0, 0, 0}) + QByteArray(16, '\x7f');
}

Resource Icon(const QByteArray& bitmap) {
  return {2, 0, QStringLiteral("ICON"), 0, bitmap};
}

Resource Version(const VersionNode& node, quint32 id, quint32 language) {
  return {16, id, {}, language, node.Bytes()};
}

}  // namespace quarl::plugins::build
