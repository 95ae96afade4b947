#pragma once

#include <string>

#include "quarl_module.h"

// What the process offers to this module.

namespace quarl::kit {

/// Keeps the host for the calls below. 0: ready.
int16_t KeepHost(const QuarlHost* host) noexcept;

enum class Severity : int16_t { Information = 1, Warning = 2, Error = 3 };

/// One line for the log; nowhere when the host has none. Any thread.
void Log(Severity severity, const std::string& line);

/// As QuarlHost::ShowForm and ShowText; negative where nothing can be shown. Main thread.
int16_t ShowForm(const std::string& form, QuarlBuffer values, const QuarlFormCalls& calls);
int16_t ShowText(const std::string& title, const std::string& text);

}  // namespace quarl::kit
