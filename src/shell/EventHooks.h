#pragma once

#include <QEvent>
#include <QObject>
#include <functional>
#include <vector>

namespace quarl::shell {

/// Calls a handler when a widget gets an event of a type; the widget still gets the event itself.
class EventHooks : public QObject {
 public:
  using Handler = std::function<void(QEvent& event)>;
  using QObject::QObject;
  void On(QObject* target, QEvent::Type type, Handler handler);

  bool eventFilter(QObject* target, QEvent* event) override;

 private:
  struct Hook {
    QObject* target;
    QEvent::Type type;
    Handler handler;
  };
  std::vector<Hook> hooks_;
};

}  // namespace quarl::shell
