#include <gtest/gtest.h>

#include <QApplication>
#include <algorithm>
#include <cmath>

#include "ui/ColourScheme.h"

namespace quarl::ui {
namespace {

double Light(int channel) {
  const double part = channel / 255.0;
  return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

// The contrast of two colours as accessibility guidelines measure it: 1 to 21.
double Contrast(const QColor& one, const QColor& other) {
  const auto luminance = [](const QColor& colour) {
    return 0.2126 * Light(colour.red()) + 0.7152 * Light(colour.green()) + 0.0722 * Light(colour.blue());
  };
  const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
  return (light + 0.05) / (dark + 0.05);
}

TEST(ColourScheme, DarkTextCanBeReadOnItsGround) {
  const QPalette palette = DarkPalette();
  const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {{QPalette::WindowText, QPalette::Window},
                                                                       {QPalette::Text, QPalette::Base},
                                                                       {QPalette::Text, QPalette::AlternateBase},
                                                                       {QPalette::ButtonText, QPalette::Button},
                                                                       {QPalette::Link, QPalette::Base},
                                                                       {QPalette::HighlightedText, QPalette::Highlight},
                                                                       {QPalette::ToolTipText, QPalette::ToolTipBase}};
  for (const auto& [text, ground] : pairs) {
    EXPECT_GE(Contrast(palette.color(text), palette.color(ground)), 4.5) << text << " on " << ground;
  }
  EXPECT_GE(Contrast(palette.color(QPalette::Disabled, QPalette::Text), palette.color(QPalette::Base)), 2.5);
  EXPECT_LT(palette.color(QPalette::Window).lightness(), 100);
}

TEST(ColourScheme, WithoutADesktopNothingChanges) {
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/at/all");
  const QPalette before = QApplication::palette();
  FollowDesktopColourScheme();
  EXPECT_EQ(QApplication::palette(), before);
}

}  // namespace
}  // namespace quarl::ui
