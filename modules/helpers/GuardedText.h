#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quarl_module.h"

namespace quarl::helpers {

/// A text that a module may overwrite, laid so that its last byte, the NUL, is the last one before memory that nobody
/// may touch: the first byte written past it ends the process.
class GuardedText {
 public:
  /// Throws std::bad_alloc.
  explicit GuardedText(std::string_view text);
  ~GuardedText();
  GuardedText(GuardedText&& other) noexcept;
  GuardedText(const GuardedText&) = delete;
  GuardedText& operator=(const GuardedText&) = delete;
  GuardedText& operator=(GuardedText&&) = delete;

  QuarlBuffer Buffer() const { return {text_, static_cast<uint32_t>(size_ + 1)}; }
  /// What stands there now, as long as the text was, NULs included.
  std::string Text() const { return {text_, size_}; }
  /// The first forbidden byte.
  const void* Guard() const { return text_ + size_ + 1; }
  /// How many bytes from Guard() on are forbidden.
  static std::size_t GuardSize();

 private:
  char* memory_;
  std::size_t mapped_;
  char* text_;
  std::size_t size_;
};

}  // namespace quarl::helpers
