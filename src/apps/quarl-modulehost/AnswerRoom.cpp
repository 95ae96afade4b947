#include "AnswerRoom.h"

#include <cstring>

namespace quarl::host {

AnswerRoom::AnswerRoom(std::size_t size)
    : text_(std::string(size - 1, '\0')), guard_(text_.Guard(), helpers::GuardedText::GuardSize(), 0) {}

std::string AnswerRoom::Take() {
  const QuarlBuffer buffer = Buffer();
  std::string taken(buffer.text, strnlen(buffer.text, buffer.size - 1));
  std::memset(buffer.text, 0, buffer.size);
  return taken;
}

void AnswerRoom::Clear() {
  const QuarlBuffer buffer = Buffer();
  if (buffer.text[0] != '\0') std::memset(buffer.text, 0, buffer.size);
}

}  // namespace quarl::host
