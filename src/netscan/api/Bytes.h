#pragma once

#include <cstdint>
#include <span>
#include <vector>

// No Qt here: the helper program uses it too.

namespace quarl::netscan {

using Bytes = std::span<const std::uint8_t>;
using ByteVector = std::vector<std::uint8_t>;

/// Reads numbers and runs of bytes one after the other and never beyond the end: from the first step that does not fit
/// on, every result is 0 or empty and Ok() is false. The bytes belong to the caller.
class ByteReader {
 public:
  explicit ByteReader(Bytes bytes, std::size_t position = 0)
      : bytes_(bytes), position_(position), ok_(position <= bytes.size()) {}

  bool Ok() const { return ok_; }
  std::size_t Position() const { return position_; }
  std::size_t Left() const { return ok_ ? bytes_.size() - position_ : 0; }

  Bytes Take(std::size_t count) {
    if (!ok_ || count > Left()) {
      ok_ = false;
      return {};
    }
    position_ += count;
    return bytes_.subspan(position_ - count, count);
  }
  void Skip(std::size_t count) { Take(count); }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Number<1, true>()); }
  std::uint16_t Big16() { return static_cast<std::uint16_t>(Number<2, true>()); }
  std::uint32_t Big32() { return Number<4, true>(); }
  std::uint16_t Little16() { return static_cast<std::uint16_t>(Number<2, false>()); }
  std::uint32_t Little32() { return Number<4, false>(); }

 private:
  template <std::size_t kSize, bool kBig>
  std::uint32_t Number() {
    const Bytes part = Take(kSize);
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < part.size(); ++index)
      value |= std::uint32_t{part[index]} << (8 * (kBig ? kSize - 1 - index : index));
    return value;
  }

  Bytes bytes_;
  std::size_t position_;
  bool ok_;
};

/// Puts numbers and runs of bytes one behind the other.
class ByteWriter {
 public:
  ByteWriter& Byte(std::uint8_t value) {
    bytes_.push_back(value);
    return *this;
  }
  ByteWriter& Zeros(std::size_t count) {
    for (; count > 0; --count) bytes_.push_back(0);
    return *this;
  }
  template <typename Run>
  ByteWriter& Add(const Run& run) {
    bytes_.insert(bytes_.end(), std::begin(run), std::end(run));
    return *this;
  }
  ByteWriter& Big16(std::uint32_t value) { return Byte(Low(value >> 8)).Byte(Low(value)); }
  ByteWriter& Big32(std::uint32_t value) { return Big16(value >> 16).Big16(value); }
  ByteWriter& Little16(std::uint32_t value) { return Byte(Low(value)).Byte(Low(value >> 8)); }
  ByteWriter& Little32(std::uint32_t value) { return Little16(value).Little16(value >> 16); }
  std::size_t Size() const { return bytes_.size(); }
  ByteVector Done() { return std::move(bytes_); }

 private:
  static std::uint8_t Low(std::uint32_t value) { return static_cast<std::uint8_t>(value & 0xff); }
  ByteVector bytes_;
};

}  // namespace quarl::netscan
