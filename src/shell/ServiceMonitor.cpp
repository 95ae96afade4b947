#include "shell/ServiceMonitor.h"

#include <QApplication>
#include <algorithm>
#include <array>

#include "base/StringTable.h"
#include "shell/MainControls.h"
#include "store/Stores.h"
#include "ui/PaintingPause.h"

namespace quarl::shell {
namespace {

enum class Buttons { Neither, StartOnly, StopOnly, Unchanged };

struct Row {
  qint16 state;
  Text text;
  Buttons buttons;
};

constexpr std::array kRows{
    Row{-1, Text::ServiceNotInstalled, Buttons::Neither}, Row{1, Text::ServiceStopped, Buttons::StartOnly},
    Row{2, Text::ServiceStarting, Buttons::Unchanged},    Row{3, Text::ServiceStopping, Buttons::Unchanged},
    Row{4, Text::ServiceRunning, Buttons::StopOnly},      Row{5, Text::ServiceContinuing, Buttons::Unchanged},
    Row{6, Text::ServicePausing, Buttons::Unchanged},     Row{7, Text::ServicePaused, Buttons::Unchanged},
};

}  // namespace

void ServiceMonitor::Refresh() {
  if (QApplication::activeModalWidget() || ui::PaintingPause::IsOn()) return;
  const qint16 state = stores_.System().GetServiceState();
  const auto row = std::find_if(kRows.begin(), kRows.end(), [&](const Row& each) { return each.state == state; });
  const bool known = row != kRows.end();
  const QString text = known ? LoadText(row->text) : QString();
  if (known && row->buttons != Buttons::Unchanged) {
    controls_.Button(QStringLiteral("SStart"))->setEnabled(row->buttons == Buttons::StartOnly);
    controls_.Button(QStringLiteral("SStop"))->setEnabled(row->buttons == Buttons::StopOnly);
  }
  controls_.servicePanel->setText(text);
}

}  // namespace quarl::shell
