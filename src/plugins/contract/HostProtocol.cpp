#include "plugins/contract/HostProtocol.h"

#include <array>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace quarl::plugins {
namespace {

constexpr std::size_t kLengthSize = 4;
constexpr std::size_t kMostItems = 16;

template <typename Number>
std::array<char, sizeof(Number)> BytesOf(Number number) {
  const auto bits = static_cast<std::make_unsigned_t<Number>>(number);
  std::array<char, sizeof(Number)> bytes;
  for (std::size_t i = 0; i < sizeof(Number); ++i) {
    bytes[i] = static_cast<char>(static_cast<unsigned char>(bits >> (8 * i)));
  }
  return bytes;
}

template <typename Number>
void PutNumber(std::string& out, Number number) {
  const auto bytes = BytesOf(number);
  out.append(bytes.data(), bytes.size());
}

void PutText(std::string& out, const std::string& text) {
  if (text.size() > kLargestText) throw std::length_error("text of a frame");
  PutNumber(out, static_cast<std::uint32_t>(text.size()));
  out += text;
}

void PutItems(std::string& out, const std::vector<std::string>& texts, const std::vector<std::int64_t>& numbers) {
  PutNumber(out, static_cast<std::uint8_t>(texts.size()));
  for (const std::string& text : texts) PutText(out, text);
  PutNumber(out, static_cast<std::uint8_t>(numbers.size()));
  for (const std::int64_t number : numbers) PutNumber(out, number);
}

/// Puts a frame at the end; write puts its content there. When it throws, nothing has been put.
template <typename Write>
void PutFrame(std::string& frames, const Write& write) {
  const std::size_t start = frames.size();
  try {
    frames.append(kLengthSize, '\0');
    write();
    const std::size_t size = frames.size() - start - kLengthSize;
    if (size > kLargestFrame) throw std::length_error("frame");
    const auto length = BytesOf(static_cast<std::uint32_t>(size));
    frames.replace(start, length.size(), length.data(), length.size());
  } catch (...) {
    frames.resize(start);
    throw;
  }
}

/// Reads values one after the other; after the first that is not there, Good() is false and all others are empty.
class Taker {
 public:
  explicit Taker(std::string_view content) : rest_(content) {}

  template <typename Number>
  Number Take() {
    std::make_unsigned_t<Number> bits = 0;
    const std::string_view bytes = Bytes(sizeof(Number));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      bits = static_cast<decltype(bits)>(
          bits |
          static_cast<decltype(bits)>(static_cast<decltype(bits)>(static_cast<unsigned char>(bytes[i])) << (8 * i)));
    }
    return static_cast<Number>(bits);
  }

  std::string TakeText() {
    const auto size = Take<std::uint32_t>();
    if (size > kLargestText) good_ = false;
    return std::string(Bytes(size));
  }

  void TakeItems(std::vector<std::string>& texts, std::vector<std::int64_t>& numbers) {
    std::size_t left = Count();
    if (good_) texts.reserve(left);
    for (; left > 0 && good_; --left) texts.push_back(TakeText());
    for (left = Count(); left > 0 && good_; --left) numbers.push_back(Take<std::int64_t>());
  }

  bool Whole() const { return good_ && rest_.empty(); }

 private:
  std::size_t Count() {
    const std::size_t count = Take<std::uint8_t>();
    if (count > kMostItems) good_ = false;
    return count;
  }

  std::string_view Bytes(std::size_t size) {
    if (!good_ || size > rest_.size()) {
      good_ = false;
      return {};
    }
    const std::string_view bytes = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return bytes;
  }

  std::string_view rest_;
  bool good_ = true;
};

struct Counts {
  HostOperation operation;
  std::size_t texts, numbers;
};

constexpr Counts kCounts[] = {
    {HostOperation::About, 1, 0}, {HostOperation::GetBufferSize, 1, 0}, {HostOperation::SetProperties, 4, 0},
    {HostOperation::Alert, 7, 0}, {HostOperation::Check, 4, 1},         {HostOperation::AlertEvent, 11, 3},
};

bool HasItsCounts(const HostRequest& request) {
  for (const Counts& row : kCounts) {
    if (row.operation != request.operation) continue;
    return row.texts == request.texts.size() && row.numbers == request.numbers.size();
  }
  return false;
}

std::size_t LengthAt(std::string_view bytes) {
  return Taker(bytes).Take<std::uint32_t>();
}

}  // namespace

void AppendFrame(std::string& frames, const HostRequest& request) {
  PutFrame(frames, [&] {
    PutNumber(frames, request.id);
    PutNumber(frames, static_cast<std::uint8_t>(request.operation));
    PutNumber(frames, static_cast<std::uint8_t>(request.kind == ModuleKind::Alert ? 1 : 0));
    PutNumber(frames, request.ownerWindow);
    PutText(frames, request.applicationTitle);
    PutItems(frames, request.texts, request.numbers);
  });
}

void AppendFrame(std::string& frames, const HostReply& reply) {
  PutFrame(frames, [&] {
    PutNumber(frames, reply.id);
    PutNumber(frames, static_cast<std::uint8_t>(reply.word));
    PutNumber(frames, reply.result);
    PutItems(frames, reply.texts, reply.numbers);
  });
}

std::string FrameOf(const HostRequest& request) {
  std::string frame;
  AppendFrame(frame, request);
  return frame;
}

std::string FrameOf(const HostReply& reply) {
  std::string frame;
  AppendFrame(frame, reply);
  return frame;
}

std::optional<HostRequest> ReadRequest(std::string_view content) {
  Taker taker(content);
  HostRequest request;
  request.id = taker.Take<std::uint32_t>();
  request.operation = static_cast<HostOperation>(taker.Take<std::uint8_t>());
  const auto kind = taker.Take<std::uint8_t>();
  request.kind = kind == 1 ? ModuleKind::Alert : ModuleKind::Test;
  request.ownerWindow = taker.Take<std::uint64_t>();
  request.applicationTitle = taker.TakeText();
  taker.TakeItems(request.texts, request.numbers);
  if (!taker.Whole() || kind > 1 || !HasItsCounts(request)) return std::nullopt;
  return request;
}

std::optional<HostReply> ReadReply(std::string_view content) {
  Taker taker(content);
  HostReply reply;
  reply.id = taker.Take<std::uint32_t>();
  reply.word = static_cast<HostWord>(taker.Take<std::uint8_t>());
  reply.result = taker.Take<std::int16_t>();
  taker.TakeItems(reply.texts, reply.numbers);
  if (!taker.Whole() || reply.word < HostWord::Answered || reply.word > HostWord::Stepped) return std::nullopt;
  const bool wantsText =
      reply.word == HostWord::Failed || reply.word == HostWord::Stuck || reply.word == HostWord::LogLine;
  if (wantsText && reply.texts.size() != 1) return std::nullopt;
  return reply;
}

std::string OverrunFrame(std::uint32_t id) {
  HostReply reply;
  reply.id = id;
  reply.word = HostWord::Overrun;
  return FrameOf(reply);
}

void FrameBuffer::Add(std::string_view bytes) {
  if (start_ > 0) {
    bytes_.erase(0, start_);
    start_ = 0;
  }
  bytes_ += bytes;
}

bool FrameBuffer::Broken() const {
  const std::string_view rest = std::string_view(bytes_).substr(start_);
  return rest.size() >= kLengthSize && LengthAt(rest) > kLargestFrame;
}

std::optional<std::string_view> FrameBuffer::Next() {
  const std::string_view rest = std::string_view(bytes_).substr(start_);
  if (rest.size() < kLengthSize || Broken()) return std::nullopt;
  const std::size_t length = LengthAt(rest);
  if (rest.size() - kLengthSize < length) return std::nullopt;
  start_ += kLengthSize + length;
  return rest.substr(kLengthSize, length);
}

HostRequest CheckRequest(std::uint32_t id, std::string modulePath, CheckFacts facts) {
  HostRequest request;
  request.id = id;
  request.operation = HostOperation::Check;
  request.kind = ModuleKind::Test;
  request.texts.reserve(4);
  for (std::string* text : {&modulePath, &facts.serverName, &facts.serverAddress, &facts.properties}) {
    request.texts.push_back(std::move(*text));
  }
  request.numbers = {facts.limit.count()};
  return request;
}

HostRequest EventRequest(std::uint32_t id, std::string modulePath, const EventFacts& facts) {
  HostRequest request;
  request.id = id;
  request.operation = HostOperation::AlertEvent;
  request.kind = ModuleKind::Alert;
  request.texts = {std::move(modulePath), facts.subject,   facts.message,   facts.serverName,
                   facts.serverAddress,   facts.groupName, facts.testName,  facts.resultText,
                   facts.problemId,       facts.messageId, facts.properties};
  request.numbers = {facts.kind, facts.time, facts.since};
  return request;
}

EventFacts EventFactsOf(const HostRequest& request) {
  const auto& t = request.texts;
  const auto& n = request.numbers;
  return {t.at(1), t.at(2), t.at(3),  t.at(4), t.at(5), t.at(6), t.at(7),
          t.at(8), t.at(9), t.at(10), n.at(0), n.at(1), n.at(2)};
}

}  // namespace quarl::plugins
