#include <algorithm>

#include "HelperCalls.h"

namespace quarl::helpers {
namespace {

constexpr int16_t kMostChecksAtOnce = 1000;

}  // namespace

ModuleTable& Modules() {
  static ModuleTable table(QUARL_MODULE_TEST);
  return table;
}

}  // namespace quarl::helpers

int16_t Check(QuarlBuffer modulePath, const QuarlCheckRequest* request, QuarlCheckResult* result) {
  using namespace quarl::helpers;
  return Guarded([&] { return Modules().At(modulePath).Get<decltype(&QuarlCheck)>("QuarlCheck")(request, result); });
}

int16_t FindSteps(QuarlBuffer modulePath, const void** steps) {
  using namespace quarl::helpers;
  return Guarded([&] {
    auto& module = Modules().At(modulePath);
    *steps = reinterpret_cast<const void*>(module.Find<decltype(&QuarlCheckStep)>("QuarlCheckStep"));
    if (*steps == nullptr) return int16_t{0};
    const auto atOnce = module.Find<decltype(&QuarlChecksAtOnce)>("QuarlChecksAtOnce");
    return atOnce == nullptr ? kMostChecksAtOnce : std::clamp(atOnce(), int16_t{1}, kMostChecksAtOnce);
  });
}

int16_t CheckStep(const void* steps, const QuarlCheckRequest* request, QuarlCheckWait* wait, QuarlCheckResult* result) {
  using namespace quarl::helpers;
  return Guarded([&] { return reinterpret_cast<decltype(&QuarlCheckStep)>(steps)(request, wait, result); });
}
