#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/ModuleKind.h"

/// What quarl-modulehost and the programs that start it say to each other, over one stream socket. The host has it as
/// descriptor 3. Each frame is the length of its content, 4 bytes little-endian, and the content; both sides check
/// every bound before they believe one. Texts are bytes with a length and may hold NULs. No Qt in here: the host is to
/// start fast.
namespace quarl::plugins {

inline constexpr int kHostChannel = 3;                            ///< the host's descriptor of the socket
inline constexpr std::size_t kLargestText = 1024UL * 1024;        ///< bytes
inline constexpr std::size_t kLargestFrame = 18 * 1024UL * 1024;  ///< bytes of content
inline constexpr std::size_t kCheckTextSize = 4096;               ///< bytes of a check's line or performance data
inline constexpr std::size_t kResultTextSize = 255;               ///< bytes of an alert's result text

enum class HostOperation : std::uint8_t { About = 1, GetBufferSize, SetProperties, Alert, Check, AlertEvent };

/// One call of a module. How many texts and numbers there are depends on the operation alone:
///   About, GetBufferSize   path
///   SetProperties          path, server name, server address, properties
///   Alert                  path, server name, server address, subject, message, properties, result text
///   Check                  path, server name, server address, properties; time limit in ms
///   AlertEvent             path and the texts of EventFacts in their order; kind, time, since
/// The path is native and absolute.
struct HostRequest {
  std::uint32_t id = 0;  ///< comes back with everything that the host says about this request
  HostOperation operation = HostOperation::About;
  ModuleKind kind = ModuleKind::Test;
  std::uint64_t ownerWindow = 0;  ///< the window over which dialogs stand, as the window system numbers it; 0: none
  std::string applicationTitle;   ///< for titles of dialogs
  std::vector<std::string> texts;
  std::vector<std::int64_t> numbers;
};

enum class HostWord : std::uint8_t {
  Answered = 1,  ///< result is the module's; texts as below
  Failed,        ///< texts: one sentence for the user, why the module could not be called
  Overrun,       ///< the module wrote past a buffer; the host ends with a signal right after
  Stuck,         ///< texts: one sentence; a step of the check did not come back; the host ends right after
  TimedOut,      ///< the check was not over at its time limit; the host goes on
  // What the host says before its answer:
  DialogOpened,  ///< a dialog of the module is about to be shown; time limits rest
  DialogClosed,
  LogLine,  ///< texts: one line; result: 1 information, 2 warning, 3 error. The id may be 0
  Stepped,  ///< the module's checks take no thread of the worker: it may have as many at once as result says. The id is
            ///< 0
};

/// What the host says. After Answered there are:
///   About .. Alert   texts: every text of the request, with what the module left in it, at its full length
///   Check            texts: line, performance data, each up to its NUL; numbers: duration in us, negative: not known
///   AlertEvent       texts: result text, all kResultTextSize bytes of it
/// Nothing says that a text that comes from a module is UTF-8.
struct HostReply {
  std::uint32_t id = 0;
  HostWord word = HostWord::Answered;
  std::int16_t result = 0;
  std::vector<std::string> texts;
  std::vector<std::int64_t> numbers;

  /// Ends its request.
  bool IsLast() const { return word <= HostWord::TimedOut; }
};

/// The frame of a message, with its length. Throws std::length_error beyond kLargestText or kLargestFrame.
std::string FrameOf(const HostRequest& request);
std::string FrameOf(const HostReply& reply);
/// The same at the end of others.
void AppendFrame(std::string& frames, const HostRequest& request);
void AppendFrame(std::string& frames, const HostReply& reply);
/// The message of a frame's content; nothing for one that is malformed, has other counts than its operation wants or
/// goes on behind its end.
std::optional<HostRequest> ReadRequest(std::string_view content);
std::optional<HostReply> ReadReply(std::string_view content);

/// A frame that says Overrun; made beforehand, because a signal handler sends it.
std::string OverrunFrame(std::uint32_t id);

/// Puts frames together again from what a stream delivers.
class FrameBuffer {
 public:
  void Add(std::string_view bytes);
  /// The content of the next whole frame; good until Add().
  std::optional<std::string_view> Next();
  /// The next frame is longer than kLargestFrame: nothing that follows can be understood.
  bool Broken() const;

 private:
  std::string bytes_;
  std::size_t start_ = 0;
};

/// The arguments of a check.
struct CheckFacts {
  std::string serverName;
  std::string serverAddress;
  std::string properties;
  std::chrono::milliseconds limit{0};
};

/// The facts of an alert; QuarlEvent of the module header says what each is.
struct EventFacts {
  std::string subject;
  std::string message;
  std::string serverName;
  std::string serverAddress;
  std::string groupName;
  std::string testName;
  std::string resultText;
  std::string problemId;
  std::string messageId;
  std::string properties;
  std::int64_t kind = 0;
  std::int64_t time = 0;
  std::int64_t since = 0;
};

HostRequest CheckRequest(std::uint32_t id, std::string modulePath, CheckFacts facts);
HostRequest EventRequest(std::uint32_t id, std::string modulePath, const EventFacts& facts);
/// The facts out of a request that ReadRequest() gave for the operation.
EventFacts EventFactsOf(const HostRequest& request);

}  // namespace quarl::plugins
