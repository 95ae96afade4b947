#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quarl::sdk {

/// Bytes that grow, numbers little-endian.
class Bytes {
 public:
  void U16(uint32_t value) {
    data_.push_back(static_cast<char>(value & 0xff));
    data_.push_back(static_cast<char>((value >> 8) & 0xff));
  }
  void U32(uint32_t value) {
    U16(value & 0xffff);
    U16(value >> 16);
  }
  void Append(std::string_view bytes) { data_.append(bytes); }
  void Zeros(size_t count) { data_.append(count, '\0'); }
  /// Zeros up to the next multiple.
  void Align(size_t multiple) { Zeros((multiple - data_.size() % multiple) % multiple); }
  void PatchU16(size_t offset, uint32_t value) {
    data_[offset] = static_cast<char>(value & 0xff);
    data_[offset + 1] = static_cast<char>((value >> 8) & 0xff);
  }
  size_t Size() const { return data_.size(); }
  const std::string& Data() const { return data_; }

 private:
  std::string data_;
};

}  // namespace quarl::sdk
