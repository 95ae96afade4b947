#pragma once

#include <string>
#include <vector>

namespace quarl::plugins {

/// A variable in the environment by which the processes of one host are known, wherever they have gone: a child that
/// starts a session of its own is in no group of the host any more, but has the variable.
class HostMark {
 public:
  HostMark();

  /// The environment of this program with the mark.
  std::vector<std::string> Environment() const;
  /// Kills every process of this user that has the mark. For when the host itself can start no more.
  void KillMarked() const;

 private:
  bool KillOnce() const;

  std::string entry_;
};

}  // namespace quarl::plugins
