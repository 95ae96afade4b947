#include "GuardedText.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>
#include <utility>

namespace quarl::helpers {

std::size_t GuardedText::GuardSize() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

GuardedText::GuardedText(std::string_view text) : size_(text.size()) {
  const std::size_t page = GuardSize();
  const std::size_t usable = (size_ + 1 + page - 1) / page * page;
  mapped_ = usable + page;
  void* memory = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  memory_ = static_cast<char*>(memory);
  if (mprotect(memory_ + usable, page, PROT_NONE) != 0) {
    munmap(memory_, mapped_);
    throw std::bad_alloc();
  }
  text_ = memory_ + usable - size_ - 1;
  text.copy(text_, size_);
  text_[size_] = '\0';
}

GuardedText::GuardedText(GuardedText&& other) noexcept
    : memory_(std::exchange(other.memory_, nullptr)), mapped_(other.mapped_), text_(other.text_), size_(other.size_) {}

GuardedText::~GuardedText() {
  if (memory_ != nullptr) munmap(memory_, mapped_);
}

}  // namespace quarl::helpers
