#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/AlertModule.h"

namespace quarl::alerts {

/// One fact of an event under the name that templates call it by.
struct Fact {
  const char* name;
  std::string value;
};

/// All facts of an event as texts: subject, message, server, address, group, test, text, state ("problem", "recovery",
/// "test"), time and since (local, "2026-01-31 23:59:59 +0100", "" when unknown), problem and id. They are UTF-8
/// without NUL; lines end in "\n", the last one without.
std::vector<Fact> FactsOf(const kit::Event& event);

const char* StateWord(kit::EventKind kind);

using Escape = std::function<std::string(const std::string&)>;

/// The template with each "{name}" replaced by the fact of that name, escaped where that is asked for. What a fact
/// holds is not looked at again. Braces around anything but lower-case letters, and unknown names, stay.
std::string Expand(std::string_view pattern, const std::vector<Fact>& facts, const Escape& escape = {});

/// "" when a template names known facts only, else a sentence.
std::string FaultOfTemplate(std::string_view pattern);

/// "{subject}, {message}, ...": the names for a form's help.
std::string PlaceholderNames();

/// An event with a value for every fact, for trying a template.
kit::Event SampleEvent();

}  // namespace quarl::alerts
