#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "quarl_module.h"

// forms_probe LIBRARY OWNER FORM VALUES: shows a form as the module host does, in a process without Qt, and prints the
// result and the values. OWNER is the number of an X11 window or 0.

namespace {

void Log(int16_t, const char* line) {
  std::fprintf(stderr, "%s\n", line);
}

// Reports the values, as a module's check would report what it found.
int16_t Try(void*, const char* values, QuarlBuffer report) {
  std::snprintf(report.text, report.size, "Passed (0.1 ms)\n%s", values);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  using Open = int16_t(QuarlHost*, uint64_t, const char*);
  auto* const open = reinterpret_cast<Open*>(dlsym(library, "QuarlFormsOpen"));
  QuarlHost host{sizeof(QuarlHost), nullptr, nullptr, &Log, nullptr, 0};
  if (open(&host, std::strtoull(argv[2], nullptr, 0), "Quarl Console") != 0) return 2;
  std::string values = argv[4];
  values.resize(65536);
  const QuarlFormCalls calls{sizeof(QuarlFormCalls), nullptr, &Try, nullptr};
  const int16_t result = host.ShowForm(argv[3], {values.data(), static_cast<uint32_t>(values.size())}, &calls);
  std::printf("%d\n%s\n", result, values.c_str());
  std::fflush(stdout);
  _Exit(0);
}
