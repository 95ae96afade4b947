#pragma once

#include "HelperLibrary.h"

namespace quarl::host {

/// Makes the call that a request asks for and gives the answer to send. Never throws: what keeps the module from being
/// called is in the answer. Any thread, except for About and SetProperties, which belong to the main thread.
plugins::HostReply CallModule(const HelperLibrary& helper, const plugins::HostRequest& request) noexcept;

/// The answer that says why a module could not be called.
plugins::HostReply Refusal(std::uint32_t request, const std::string& sentence);

}  // namespace quarl::host
