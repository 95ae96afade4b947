#pragma once

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QStandardPaths>
#include <QtGlobal>
#include <array>
#include <string>
#include <vector>

namespace quarl::testing {

/// An X server for one test program: a static object, so that it is up before the application object is made.
class VirtualDisplay {
 public:
  VirtualDisplay() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return;
    std::string descriptor = std::to_string(ends[1]);
    std::string words[] = {"Xvfb", "-displayfd", descriptor, "-screen", "0", "800x600x24", "-nolisten", "tcp"};
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    if (posix_spawnp(&server_, words[0].c_str(), nullptr, nullptr, arguments.data(), environ) != 0) server_ = 0;
    close(ends[1]);
    std::string number;
    pollfd ready{ends[0], POLLIN, 0};
    for (char digit = 0; server_ > 0 && poll(&ready, 1, 10'000) == 1 && read(ends[0], &digit, 1) == 1;) {
      if (digit != '\n') {
        number += digit;
        continue;
      }
      name_ = ":" + number;
      break;
    }
    close(ends[0]);
    qputenv("QT_QPA_PLATFORM", name_.empty() ? "offscreen" : "xcb");
    if (!name_.empty()) qputenv("DISPLAY", name_.c_str());
  }
  ~VirtualDisplay() {
    if (server_ <= 0) return;
    kill(server_, SIGTERM);
    waitpid(server_, nullptr, 0);
  }
  /// What is missing for tests on the display; empty when nothing is.
  std::string Lack() const {
    if (name_.empty()) return "Xvfb could not be started";
    return QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty() ? "xdotool is not installed" : "";
  }

 private:
  pid_t server_ = 0;
  std::string name_;
};

}  // namespace quarl::testing
