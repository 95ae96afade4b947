#pragma once

#include <cstdint>
#include <string>

namespace quarl::alerts {

enum class Urgency : uint8_t { Low = 0, Normal = 1, Critical = 2 };

struct DesktopNote {
  std::string icon;  ///< name of the icon theme
  std::string title;
  std::string body;  ///< plain text; lines end in "\n"
  Urgency urgency = Urgency::Normal;
  int32_t milliseconds = 0;  ///< until it disappears; 0: stays
};

/// Hands a note to the notification service of a session bus. "" when the service took it, else a sentence.
/// @param busAddress as D-Bus writes it ("unix:path=..."); "" for the bus of this process's user.
std::string ShowNote(const DesktopNote& note, const std::string& busAddress);

}  // namespace quarl::alerts
