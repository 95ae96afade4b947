#include "ResourceWriter.h"

#include <png.h>

#include <stdexcept>
#include <utility>

#include "LittleEndian.h"
#include "VersionRecord.h"

namespace quarl::sdk {
namespace {

constexpr uint32_t kLargestSide = 1024;
constexpr uint32_t kHeader = 124;
constexpr uint32_t kChannelMasks = 3;
constexpr uint32_t kStandardColours = 0x73524742;  // "sRGB"
constexpr uint32_t kForPictures = 4;

constexpr uint32_t kBitmapType = 2;
constexpr uint32_t kVersionType = 16;
constexpr uint32_t kVersionId = 1;
constexpr uint32_t kHighBit = 0x80000000U;

struct Pixels {
  uint32_t width = 0;
  uint32_t height = 0;
  std::string rows;  // blue, green, red, alpha; the bottom row first
};

Pixels ReadPng(const std::string& path) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) throw std::runtime_error(path + ": " + image.message);
  if (image.width > kLargestSide || image.height > kLargestSide) {
    png_image_free(&image);
    throw std::runtime_error(path + ": the picture is larger than 1024 by 1024 pixels");
  }
  image.format = PNG_FORMAT_BGRA;
  Pixels pixels{image.width, image.height, std::string(PNG_IMAGE_SIZE(image), '\0')};
  const int stride = -static_cast<int>(image.width * 4);
  if (png_image_finish_read(&image, nullptr, pixels.rows.data(), stride, nullptr) == 0) {
    throw std::runtime_error(path + ": " + image.message);
  }
  return pixels;
}

void WriteDirectory(Bytes& out, uint32_t named, uint32_t numbered) {
  out.Zeros(12);
  out.U16(named);
  out.U16(numbered);
}

void WriteEntry(Bytes& out, uint32_t name, uint32_t target) {
  out.U32(name);
  out.U32(target);
}

}  // namespace

std::string BitmapOfPng(const std::string& path) {
  const Pixels pixels = ReadPng(path);
  Bytes out;
  out.U32(kHeader);
  out.U32(pixels.width);
  out.U32(pixels.height);
  out.U16(1);
  out.U16(32);
  out.U32(kChannelMasks);
  out.U32(static_cast<uint32_t>(pixels.rows.size()));
  out.Zeros(16);  // resolution, colours
  for (const uint32_t mask : {0x00ff0000U, 0x0000ff00U, 0x000000ffU, 0xff000000U}) out.U32(mask);
  out.U32(kStandardColours);
  out.Zeros(48);  // end points, gamma
  out.U32(kForPictures);
  out.Zeros(12);  // profile
  out.Append(pixels.rows);
  return out.Data();
}

std::string ResourceTree(const std::string& bitmap, const std::string& version) {
  // Offsets of the parts, in the order in which they are written.
  constexpr uint32_t kBitmapNames = 32;
  constexpr uint32_t kBitmapLanguages = 56;
  constexpr uint32_t kVersionNames = 80;
  constexpr uint32_t kVersionLanguages = 104;
  constexpr uint32_t kBitmapEntry = 128;
  constexpr uint32_t kVersionEntry = 144;
  constexpr uint32_t kName = 160;
  constexpr uint32_t kData = 176;
  const auto bitmapSize = static_cast<uint32_t>(bitmap.size());
  const uint32_t versionAt = kData + (bitmapSize + 7) / 8 * 8;

  Bytes out;
  WriteDirectory(out, 0, 2);
  WriteEntry(out, kBitmapType, kHighBit | kBitmapNames);
  WriteEntry(out, kVersionType, kHighBit | kVersionNames);
  WriteDirectory(out, 1, 0);
  WriteEntry(out, kHighBit | kName, kHighBit | kBitmapLanguages);
  WriteDirectory(out, 0, 1);
  WriteEntry(out, 0, kBitmapEntry);
  WriteDirectory(out, 0, 1);
  WriteEntry(out, kVersionId, kHighBit | kVersionLanguages);
  WriteDirectory(out, 0, 1);
  WriteEntry(out, 0, kVersionEntry);
  for (const auto& [at, size] : {std::pair(kData, bitmapSize), {versionAt, static_cast<uint32_t>(version.size())}}) {
    out.U32(at);
    out.U32(size);
    out.Zeros(8);
  }
  out.U16(4);
  out.Append(Utf16("ICON"));
  out.Align(16);
  out.Append(bitmap);
  out.Align(8);
  out.Append(version);
  return out.Data();
}

std::string AssemblerSource(const std::string& resources) {
  constexpr size_t kRow = 16;
  std::string text = "\t.section .rsrc,\"aR\",%progbits\n\t.balign 16\n";
  for (size_t i = 0; i < resources.size(); ++i) {
    text += i % kRow == 0 ? "\t.byte " : ",";
    text += std::to_string(static_cast<unsigned char>(resources[i]));
    if (i % kRow == kRow - 1 || i + 1 == resources.size()) text += '\n';
  }
  return text + "\t.section .note.GNU-stack,\"\",%progbits\n";
}

}  // namespace quarl::sdk
