#pragma once

#include <QtGlobal>
#include <array>
#include <cstddef>

namespace quarl::service {

/// How late starts were, counted in classes that grow by half: a share is known to within that, whatever the number.
class Lateness {
 public:
  static constexpr std::size_t kClasses = 48;

  void Count(qint64 ms);
  quint64 Starts() const { return starts_; }
  qint64 MaxMs() const { return maxMs_; }
  /// A bound below which this share (0 to 1) of the starts was; 0 without starts.
  qint64 ShareBelowMs(double share) const;

 private:
  std::array<quint64, kClasses> classes_{};
  quint64 starts_ = 0;
  qint64 maxMs_ = 0;
};

}  // namespace quarl::service
