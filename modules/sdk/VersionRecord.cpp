#include "VersionRecord.h"

#include <iconv.h>

#include <stdexcept>

#include "LittleEndian.h"

namespace quarl::sdk {
namespace {

constexpr uint32_t kSignature = 0xfeef04bd;
constexpr uint32_t kLibrary = 2;
constexpr uint16_t kEnglish = 0x0409;
constexpr uint16_t kUnicode = 1200;

/// One block: its lengths are filled in when it is closed.
class Block {
 public:
  Block(Bytes& out, const char* name, bool text) : out_(out) {
    out_.Align(4);
    begin_ = out_.Size();
    out_.U16(0);
    out_.U16(0);
    out_.U16(text ? 1 : 0);
    out_.Append(Utf16(name));
    out_.U16(0);
    out_.Align(4);
  }
  ~Block() = default;
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  void ValueLength(size_t length) { Patch(2, length); }
  void Close() { Patch(0, out_.Size() - begin_); }

 private:
  void Patch(size_t field, size_t value) {
    if (value > 0xffff) throw std::runtime_error("the texts are too long for a version record (64 KB)");
    out_.PatchU16(begin_ + field, static_cast<uint32_t>(value));
  }

  Bytes& out_;
  size_t begin_ = 0;
};

void WriteFixed(Bytes& out, const std::array<uint16_t, 4>& version) {
  out.U32(kSignature);
  out.U32(0x00010000);           // version 1.0 of the record
  for (int i = 0; i < 2; ++i) {  // of the file, then of the product
    out.U32(static_cast<uint32_t>(version[0]) << 16 | version[1]);
    out.U32(static_cast<uint32_t>(version[2]) << 16 | version[3]);
  }
  out.U32(0x3f);  // which flags are meaningful
  out.U32(0);     // flags
  out.U32(0);     // no system that the record has a number for
  out.U32(kLibrary);
  out.Zeros(12);  // subtype, date
}

void WriteText(Bytes& out, const char* key, const std::string& text) {
  if (text.empty()) return;
  Block block(out, key, true);
  const std::string units = Utf16(text);
  out.Append(units);
  out.U16(0);
  block.ValueLength(units.size() / 2 + 1);
  block.Close();
}

void WriteTexts(Bytes& out, const ModuleDescription& module) {
  Block texts(out, "StringFileInfo", true);
  Block table(out, "040904B0", true);
  WriteText(out, "CompanyName", module.company);
  WriteText(out, "FileDescription", module.description);
  WriteText(out, "FileVersion", module.versionText);
  WriteText(out, "InternalName", module.fileName.substr(0, module.fileName.rfind('.')));
  WriteText(out, "LegalCopyright", module.copyright);
  WriteText(out, "OriginalFilename", module.fileName);
  WriteText(out, "ProductName", module.product);
  WriteText(out, "ProductVersion", module.versionText);
  table.Close();
  texts.Close();
}

}  // namespace

std::string Utf16(const std::string& utf8) {
  auto* const converter = iconv_open("UTF-16LE", "UTF-8");
  if (converter == iconv_t(-1)) {  // NOLINT(performance-no-int-to-ptr): how the call reports failure
    throw std::runtime_error("this machine cannot convert UTF-8");
  }
  std::string units(utf8.size() * 2, '\0');
  std::string source = utf8;
  char* from = source.data();
  char* to = units.data();
  size_t left = source.size();
  size_t room = units.size();
  const size_t result = iconv(converter, &from, &left, &to, &room);
  iconv_close(converter);
  if (result == static_cast<size_t>(-1)) throw std::runtime_error("a text is not valid UTF-8: " + utf8);
  units.resize(units.size() - room);
  return units;
}

std::string VersionRecord(const ModuleDescription& module) {
  Bytes out;
  Block root(out, "VS_VERSION_INFO", false);
  const size_t fixedAt = out.Size();
  WriteFixed(out, module.version);
  root.ValueLength(out.Size() - fixedAt);
  WriteTexts(out, module);
  Block info(out, "VarFileInfo", true);
  Block translation(out, "Translation", false);
  out.U16(kEnglish);
  out.U16(kUnicode);
  translation.ValueLength(4);
  translation.Close();
  info.Close();
  root.Close();
  return out.Data();
}

}  // namespace quarl::sdk
