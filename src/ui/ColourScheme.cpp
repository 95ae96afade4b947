#include "ui/ColourScheme.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFileInfo>
#include <QStyle>

namespace quarl::ui {
namespace {

constexpr int kLongestWaitMs = 250;
constexpr uint kPreferDark = 1;

// Connecting without an address may start a bus of its own, which is not worth a colour.
bool HasSessionBus() {
  return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
         QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

bool DesktopPrefersDark() {
  if (!HasSessionBus()) return false;
  QDBusMessage question = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
  question << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme");
  const QDBusMessage answer = QDBusConnection::sessionBus().call(question, QDBus::Block, kLongestWaitMs);
  if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return false;
  // The value comes in a variant within a variant.
  QVariant value = answer.arguments().constFirst();
  while (value.metaType() == QMetaType::fromType<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  return value.toUInt() == kPreferDark;
}

}  // namespace

void FollowDesktopColourScheme() {
  const bool fusion = QApplication::style()->name() == QLatin1String("fusion");
  const bool light = QApplication::palette().color(QPalette::Window).lightness() > 127;
  if (fusion && light && DesktopPrefersDark()) QApplication::setPalette(DarkPalette());
}

QPalette DarkPalette() {
  const QColor text(0xe4, 0xe6, 0xe9);
  // The base is lighter than the window: Fusion draws the frames of check boxes in views from the window's colour.
  QPalette palette(QColor(0x3a, 0x3e, 0x44), QColor(0x2b, 0x2e, 0x33));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, QColor(0x86, 0x8a, 0x91));
  }
  palette.setColor(QPalette::Base, QColor(0x36, 0x3a, 0x40));
  palette.setColor(QPalette::AlternateBase, QColor(0x3b, 0x3f, 0x46));
  palette.setColor(QPalette::ToolTipBase, QColor(0x44, 0x49, 0x51));
  palette.setColor(QPalette::BrightText, Qt::white);
  palette.setColor(QPalette::PlaceholderText, QColor(0x9a, 0x9f, 0xa7));
  palette.setColor(QPalette::Highlight, QColor(0x2a, 0x6f, 0xb3));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x7a, 0xb8, 0xf5));
  palette.setColor(QPalette::LinkVisited, QColor(0xc1, 0xa5, 0xf0));
  return palette;
}

}  // namespace quarl::ui
