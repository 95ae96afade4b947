#include "support/RunTests.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <chrono>
#include <thread>

// What the leak check is not to count, where it is built in: the D-Bus library keeps the text of a bus that it could
// not start.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libdbus-1.so\n";
}
extern "C" void __lsan_do_leak_check() __attribute__((weak));

namespace quarl::test {

int RunTests() {
  const int result = RUN_ALL_TESTS();
  const auto threads = [] { return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs).size(); };
  constexpr qsizetype kAlone = 3;  // "." and ".." with it
  for (int tenths = 0; tenths < 20 && threads() > kAlone; ++tenths) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  // While the libraries still have what is theirs: at the end of the process they take it apart in any order. Those of
  // windows are checked there, since some of what they keep is found only then.
  const bool windows = QCoreApplication::instance()->inherits("QGuiApplication");
  if (!windows && __lsan_do_leak_check != nullptr) __lsan_do_leak_check();
  return result;
}

}  // namespace quarl::test
