#include "Conversation.h"

#include <array>

namespace quarl::tcpport {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1024} * 1024;
constexpr std::size_t kBeginning = 200;
constexpr std::size_t kChunk = std::size_t{16} * 1024;

}  // namespace

kit::Task<Answer> Converse(Wire& wire, std::string_view send, std::string_view expect, const kit::Deadline& deadline) {
  co_await wire.Send(send, deadline);
  Answer answer;
  std::array<char, kChunk> chunk{};
  std::string window;  // what came, less what can no longer be part of the expected bytes
  for (std::size_t total = 0; total < kMostBytes;) {
    std::size_t received = 0;
    try {
      received = co_await wire.Receive(chunk, deadline);
    } catch (const kit::ConnectionError& error) {
      if (error.Why() != kit::ConnectionError::Reason::TimedOut) throw;
      co_return answer;
    }
    if (received == 0) {
      answer.ended = true;
      co_return answer;
    }
    total += received;
    if (answer.beginning.size() < kBeginning)
      answer.beginning.append(chunk.data(), std::min(received, kBeginning - answer.beginning.size()));
    window.append(chunk.data(), received);
    answer.found = window.find(expect) != std::string::npos;
    if (answer.found || deadline.IsOver()) co_return answer;
    co_await kit::Pause();
    if (window.size() >= expect.size()) window.erase(0, window.size() - expect.size() + 1);
  }
  answer.tooLong = true;
  co_return answer;
}

}  // namespace quarl::tcpport
