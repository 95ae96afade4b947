#include "shell/EventHooks.h"

namespace quarl::shell {

void EventHooks::On(QObject* target, QEvent::Type type, Handler handler) {
  hooks_.push_back({target, type, std::move(handler)});
  target->installEventFilter(this);
}

bool EventHooks::eventFilter(QObject* target, QEvent* event) {
  for (const Hook& hook : hooks_) {
    if (hook.target == target && hook.type == event->type()) hook.handler(*event);
  }
  return QObject::eventFilter(target, event);
}

}  // namespace quarl::shell
