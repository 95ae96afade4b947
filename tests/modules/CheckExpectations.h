#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "modules/ModuleDriver.h"

namespace quarl::testing {

inline constexpr int16_t kPassed = QUARL_PASSED, kUnknown = QUARL_UNKNOWN, kFailed = QUARL_FAILED;

/// A check ended in a state, with a part of its text, in a time that no time-out of a test reaches.
inline void Expect(const ModuleDriver::CheckAnswer& answer, int16_t state, const std::string& part) {
  EXPECT_EQ(answer.state, state) << answer.text;
  EXPECT_NE(answer.text.find(part), std::string::npos) << answer.text;
  EXPECT_LT(answer.duration, std::chrono::seconds(8));
}

/// Values with others over them; null changes nothing.
inline Json With(Json values, const Json& others) {
  if (!others.is_null()) values.update(others);
  return values;
}

/// Values on the screen of a form, and the field that refuses them, in these words; "": they are taken.
struct Refusal {
  Json values;
  const char* field;
  const char* says = "";
};

/// @param properties what the form opens with
inline void ExpectRefusals(ModuleDriver& module, const std::string& properties, const std::vector<Refusal>& cases) {
  for (const Refusal& each : cases) {
    SCOPED_TRACE(each.values.dump());
    module.SetProperties(properties, [&](ModuleDriver::OpenForm& form) -> int16_t {
      form.values.update(each.values);
      const auto answer = form.validate(form.values);
      EXPECT_EQ(answer.field, each.field) << answer.report;
      EXPECT_EQ(answer.result == 0, *each.field == '\0');
      EXPECT_EQ(answer.report.empty(), *each.field == '\0') << answer.report;
      EXPECT_NE(answer.report.find(each.says), std::string::npos) << answer.report;
      return 1;
    });
  }
}

}  // namespace quarl::testing
