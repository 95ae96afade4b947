#pragma once

#include <string>

#include "HostChannel.h"
#include "quarl_module.h"

namespace quarl::host {

/// Serves Check, Alert and AlertEvent requests of a service, many at once, each answered when it is done. Operations
/// with dialogs and GetBufferSize are refused. Returns when the other end has gone; calls may still be under way then.
void Serve(HostChannel& channel, const std::string& folder, const QuarlHost& host, int threads);

}  // namespace quarl::host
