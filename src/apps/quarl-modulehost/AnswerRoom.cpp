#include "AnswerRoom.h"

#include <algorithm>
#include <cstring>
#include <limits>

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

void CheckRooms::Begin(std::uint32_t request) {
  for (AnswerRoom* room : {&text_, &performance_}) {
    room->Clear();
    room->Follow(request);
  }
}

QuarlCheckResult CheckRooms::Result() const {
  return {sizeof(QuarlCheckResult), text_.Buffer(), performance_.Buffer(), -1};
}

plugins::HostReply CheckRooms::Reply(std::uint32_t request, int16_t state, const QuarlCheckResult& result) {
  plugins::HostReply reply;
  reply.id = request;
  reply.result = state;
  reply.texts.reserve(2);
  reply.texts.push_back(text_.Take());
  reply.texts.push_back(performance_.Take());
  reply.numbers = {result.duration};
  return reply;
}

QuarlCheckRequest QuestionOf(const plugins::HostRequest& request) {
  const auto& texts = request.texts;
  const auto limit = std::clamp<std::int64_t>(request.numbers.at(0), 0, std::numeric_limits<uint32_t>::max());
  return {sizeof(QuarlCheckRequest), texts.at(1).c_str(), texts.at(2).c_str(), texts.at(3).c_str(),
          static_cast<uint32_t>(limit)};
}

}  // namespace quarl::host
