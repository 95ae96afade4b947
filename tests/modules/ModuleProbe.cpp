#include <cstdio>

#include "modules/ModuleDriver.h"

// module_probe MODULE ADDRESS PROPERTIES: makes one check and prints state, text and performance data, a line each.
int main(int argc, char** argv) {
  if (argc != 4) return 2;
  try {
    const quarl::testing::ModuleDriver module(argv[1]);
    const auto answer = module.Check({.address = argv[2], .properties = argv[3]});
    std::printf("%d\n%s\n%s\n", answer.state, answer.text.c_str(), answer.performance.c_str());
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
