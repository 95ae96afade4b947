#pragma once

#include <span>

#include "PingSettings.h"
#include "kit/TestModule.h"
#include "netscan/api/EchoSession.h"

namespace quarl::ping {

/// State, text and figures of a check by what became of its echoes (at least one).
kit::CheckOutcome JudgeEchoes(std::span<const netscan::EchoResult> echoes, const Settings& settings);

}  // namespace quarl::ping
