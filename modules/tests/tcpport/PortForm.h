#pragma once

#include <chrono>

#include "TlsWire.h"
#include "kit/Properties.h"

namespace quarl::tcpport {

const kit::Form& PortForm();

std::uint16_t PortOf(const kit::Properties& properties);
Trust TrustOf(const kit::Properties& properties);

}  // namespace quarl::tcpport
