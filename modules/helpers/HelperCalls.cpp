#include "HelperCalls.h"

// The operations that both libraries have.

namespace quarl::helpers {

std::string& Failure() {
  thread_local std::string failure;
  return failure;
}

}  // namespace quarl::helpers

using quarl::helpers::Failure;
using quarl::helpers::Guarded;
using quarl::helpers::Modules;

void HelperStart(const QuarlHost* host) {
  Modules().SetHost(host);
}

const char* HelperFailure(void) {
  return Failure().c_str();
}

int16_t About(QuarlBuffer modulePath) {
  return Guarded([&] { return Modules().At(modulePath).Get<decltype(&QuarlAbout)>("QuarlAbout")(); });
}

int16_t GetBufferSize(QuarlBuffer modulePath) {
  return Guarded([&] { return Modules().At(modulePath).Get<decltype(&QuarlGetBufferSize)>("QuarlGetBufferSize")(); });
}

int16_t SetProperties(QuarlBuffer modulePath, QuarlBuffer serverName, QuarlBuffer serverAddress,
                      QuarlBuffer properties) {
  return Guarded([&] {
    const auto set = Modules().At(modulePath).Get<decltype(&QuarlSetProperties)>("QuarlSetProperties");
    return set(serverName, serverAddress, properties);
  });
}
