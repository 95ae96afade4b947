#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "plugins/contract/HostProtocol.h"

namespace quarl::host {

/// Puts a reply's frame at the end of others, or that of a refusal when the module left more than fits one.
void AppendFrameOrRefusal(std::string& frames, const plugins::HostReply& reply);

/// The host's end of the socket to the program that started it. Reading belongs to one thread, any may send.
class HostChannel {
 public:
  /// @param descriptor a connected stream socket; stays open as long as the process
  explicit HostChannel(int descriptor);
  HostChannel(const HostChannel&) = delete;
  HostChannel& operator=(const HostChannel&) = delete;

  /// Waits for the next request. Nothing when the other end has gone or says what cannot be understood.
  std::optional<plugins::HostRequest> Receive();
  /// Reads what has come, without waiting. False when nothing more can come.
  bool Read();
  /// The next request of what was read; nothing when there is none yet or it cannot be understood: see IsBroken().
  std::optional<plugins::HostRequest> Next();
  bool IsBroken() const { return broken_; }
  int Descriptor() const { return descriptor_; }
  /// False when it could not be sent: the other end has gone, or the module has closed the descriptor.
  bool Send(const plugins::HostReply& reply);
  /// The same for frames, one or more.
  bool SendFrames(std::string_view frames);
  /// Sends a frame from a signal handler, unless another thread is in the middle of sending one and stays there.
  void SendFromHandler(const char* frame, std::size_t size);

 private:
  bool IsStillOurs() const;
  bool SendAll(const char* data, std::size_t size) const;

  int descriptor_;
  unsigned long device_ = 0, node_ = 0;
  plugins::FrameBuffer frames_;
  bool broken_ = false;
  std::mutex sending_;
  std::atomic<bool> inFrame_ = false;
};

}  // namespace quarl::host
