#pragma once

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>

#include "kit/Placeholders.h"
#include "kit/SettingsError.h"
#include "kit/TestModule.h"

namespace quarl::checks {

/// For TestModule::Judge: what reading the settings for a server finds wrong; "" for nothing.
template <typename Read>
std::string JudgedBy(Read read, const kit::Properties& properties, std::string& key) {
  return kit::Judged(key, [&] { return read(properties, kit::Server{"server", "192.0.2.1"}); });
}

/// A field's text with its placeholders replaced. Throws kit::SettingsError for one that does not exist.
inline std::string Expanded(const char* key, std::string_view text, const kit::Placeholders& known) {
  try {
    return kit::Expand(text, known);
  } catch (const kit::Error& error) {
    throw kit::SettingsError(key, error.what());
  }
}

/// The shorter of a module's own time-out and of the caller's limit less what ending the check takes.
inline std::chrono::milliseconds TimeWithin(std::chrono::milliseconds limit, long long ownMs) {
  const std::chrono::milliseconds ending = std::min(limit / 10, std::chrono::milliseconds(500));
  return std::max(std::min(std::chrono::milliseconds(ownMs), limit - ending), std::chrono::milliseconds(1));
}

}  // namespace quarl::checks
