// make_ico OUT.ico IN.png...: an icon file that holds the given PNG pictures, each up to 256 x 256, in their order.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t HeaderSize = 6;
constexpr std::size_t EntrySize = 16;
constexpr std::uint32_t LargestSide = 256;

struct Picture {
  std::string data;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

std::uint32_t BigEndian(std::string_view bytes) {
  std::uint32_t value = 0;
  for (const char byte : bytes) value = (value << 8U) | static_cast<unsigned char>(byte);
  return value;
}

void PutLittleEndian(std::string& out, std::size_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xffU));
}

Picture ReadPicture(const std::string& path) {
  // A PNG file starts with its signature and the chunk IHDR, whose first fields are width and height.
  constexpr std::string_view Signature("\x89PNG\r\n\x1a\n", 8);
  constexpr std::size_t WidthAt = 16;
  constexpr std::size_t HeightAt = 20;
  constexpr std::size_t Least = 33;

  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  Picture picture;
  picture.data.assign(std::istreambuf_iterator<char>(file), {});
  const std::string_view bytes(picture.data);
  if (bytes.size() < Least || !bytes.starts_with(Signature)) throw std::runtime_error(path + " is no PNG file");
  picture.width = BigEndian(bytes.substr(WidthAt, 4));
  picture.height = BigEndian(bytes.substr(HeightAt, 4));
  const auto fits = [](std::uint32_t side) { return side >= 1 && side <= LargestSide; };
  if (!fits(picture.width) || !fits(picture.height)) throw std::runtime_error(path + " is larger than 256 x 256");
  return picture;
}

std::string MakeIco(const std::vector<Picture>& pictures) {
  std::string out;
  PutLittleEndian(out, 0, 2);
  PutLittleEndian(out, 1, 2);  // an icon, not a cursor
  PutLittleEndian(out, pictures.size(), 2);
  std::size_t offset = HeaderSize + EntrySize * pictures.size();
  for (const Picture& picture : pictures) {
    PutLittleEndian(out, picture.width % LargestSide, 1);  // 256 is written as 0
    PutLittleEndian(out, picture.height % LargestSide, 1);
    PutLittleEndian(out, 0, 2);   // no palette; reserved
    PutLittleEndian(out, 1, 2);   // planes
    PutLittleEndian(out, 32, 2);  // bits a pixel
    PutLittleEndian(out, picture.data.size(), 4);
    PutLittleEndian(out, offset, 4);
    offset += picture.data.size();
  }
  for (const Picture& picture : pictures) out += picture.data;
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: make_ico OUT.ico IN.png...\n", stderr);
    return 2;
  }
  try {
    std::vector<Picture> pictures;
    for (int i = 2; i < argc; ++i) pictures.push_back(ReadPicture(argv[i]));
    const std::string bytes = MakeIco(pictures);
    std::ofstream file(argv[1], std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw std::runtime_error(std::string("cannot write ") + argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_ico: %s\n", error.what());
    return 1;
  }
  return 0;
}
