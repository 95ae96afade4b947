#include "netscan/api/EchoLine.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace quarl::netscan {
namespace {

std::string Dotted(in_addr_t address) {
  std::array<char, INET_ADDRSTRLEN> text{};
  const in_addr number{address};
  inet_ntop(AF_INET, &number, text.data(), text.size());
  return text.data();
}

// Takes the word before the next blank, or the rest, away from the line.
std::string_view TakeWord(std::string_view& line) {
  const std::size_t end = line.find(' ');
  const std::string_view word = line.substr(0, end);
  line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
  return word;
}

template <typename Number>
bool ReadNumber(std::string_view word, Number& number) {
  const char* end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  return error == std::errc() && stop == end;
}

bool ReadAddress(std::string_view word, in_addr_t& address) {
  return inet_pton(AF_INET, std::string(word).c_str(), &address) == 1;
}

}  // namespace

std::string RequestLine(const EchoRequest& request) {
  return std::to_string(request.sequence) + ' ' + Dotted(request.address);
}

std::optional<EchoRequest> ReadRequestLine(std::string_view line) {
  EchoRequest request;
  std::string_view rest = line;
  if (!ReadNumber(TakeWord(rest), request.sequence) || !ReadAddress(TakeWord(rest), request.address))
    return std::nullopt;
  // Said again in our own words: whatever differs (leading zeros, a NUL, more words) is refused.
  return RequestLine(request) == line ? std::optional(request) : std::nullopt;
}

std::string AnswerLine(const EchoAnswer& answer) {
  return RequestLine({answer.sequence, answer.address}) + ' ' + std::to_string(static_cast<int>(answer.status));
}

std::optional<EchoAnswer> ReadAnswerLine(std::string_view line) {
  const std::size_t cut = line.rfind(' ');
  if (cut == std::string_view::npos) return std::nullopt;
  const auto request = ReadRequestLine(line.substr(0, cut));
  int status = 0;
  if (!request || !ReadNumber(line.substr(cut + 1), status)) return std::nullopt;
  const EchoAnswer answer{request->sequence, request->address, static_cast<EchoStatus>(status)};
  return AnswerLine(answer) == line ? std::optional(answer) : std::nullopt;
}

bool EchoLines::Add(std::string_view bytes) {
  pending_ += bytes;
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = pending_.find('\n', begin);
    if (std::min(end, pending_.size()) - begin > kLongestEchoLine) return false;
    if (end == std::string::npos) return true;
    begin = end + 1;
  }
}

std::optional<std::string> EchoLines::Next() {
  const std::size_t end = pending_.find('\n');
  if (end == std::string::npos) return std::nullopt;
  std::string line = pending_.substr(0, end);
  pending_.erase(0, end + 1);
  return line;
}

}  // namespace quarl::netscan
