#include "tests/common/Reply.h"

#include "kit/Text.h"

namespace quarl::checks {

kit::CheckOutcome OutcomeWithoutAnswer(const Reply& reply) {
  kit::CheckOutcome outcome;
  outcome.state = reply.end == Reply::End::NoAnswer ? kit::State::Failed : kit::State::Unknown;
  outcome.text = kit::OneLine(reply.error);
  outcome.duration = reply.time;
  return outcome;
}

}  // namespace quarl::checks
