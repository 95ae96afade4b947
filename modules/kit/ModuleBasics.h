#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "kit/Host.h"

namespace quarl::kit {

/// The about box of a module; lets no exception out.
int16_t ShowAbout(const std::string& text) noexcept;

/// What a module may say about its buffer.
inline int16_t ClampBufferSize(int16_t size) {
  return std::max<int16_t>(size, 0);
}

}  // namespace quarl::kit

/// The exported functions that test and alert modules have in common.
#define QUARL_DEFINE_MODULE_BASICS(module)                                                                \
  int16_t QuarlModuleStart(const QuarlHost* host) {                                                       \
    return quarl::kit::KeepHost(host);                                                                    \
  }                                                                                                       \
  int16_t QuarlAbout(void) {                                                                              \
    return quarl::kit::ShowAbout((module).About());                                                       \
  }                                                                                                       \
  int16_t QuarlGetBufferSize(void) {                                                                      \
    return quarl::kit::ClampBufferSize((module).BufferSize());                                            \
  }                                                                                                       \
  int16_t QuarlSetProperties(QuarlBuffer serverName, QuarlBuffer serverAddress, QuarlBuffer properties) { \
    return quarl::kit::SetProperties((module), serverName, serverAddress, properties);                    \
  }
