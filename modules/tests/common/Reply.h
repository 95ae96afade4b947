#pragma once

#include <chrono>
#include <string>

#include "kit/TestModule.h"

namespace quarl::checks {

/// How a question to a server ended.
struct Reply {
  enum class End {
    Answered,  ///< what has come holds
    NoAnswer,  ///< error says what the server did wrong
    NotMade,   ///< error says what is wrong with the question or with this machine
  };
  End end = End::NotMade;
  std::string error{};
  std::chrono::microseconds time{0};

  double Milliseconds() const { return std::chrono::duration<double, std::milli>(time).count(); }
};

/// The outcome of a check whose question has no answer.
kit::CheckOutcome OutcomeWithoutAnswer(const Reply& reply);

}  // namespace quarl::checks
