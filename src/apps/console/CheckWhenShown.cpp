#include "apps/console/CheckWhenShown.h"

#include <QTimer>

#include "ui/ErrorTrap.h"

namespace quarl::apps {
namespace {

constexpr int kPauseMs = 100;

}  // namespace

void CheckWhenShown(StoreComposition& stores, QWidget& window) {
  auto* timer = new QTimer(&window);
  timer->setSingleShot(true);
  timer->callOnTimeout(&window, [&stores, &window, timer] {
    const ui::ErrorTrap trap({}, ui::MessageBoxes(&window));
    trap.Untagged([&] {
      if (stores.CheckAside()) timer->start();
    });
  });
  timer->start(kPauseMs);
}

}  // namespace quarl::apps
