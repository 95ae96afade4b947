#include "HelperCalls.h"

namespace quarl::helpers {

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
    *steps = reinterpret_cast<const void*>(Modules().At(modulePath).Find<decltype(&QuarlCheckStep)>("QuarlCheckStep"));
    return static_cast<int16_t>(*steps != nullptr ? 1 : 0);
  });
}

int16_t CheckStep(const void* steps, const QuarlCheckRequest* request, QuarlCheckWait* wait, QuarlCheckResult* result) {
  using namespace quarl::helpers;
  return Guarded([&] { return reinterpret_cast<decltype(&QuarlCheckStep)>(steps)(request, wait, result); });
}
