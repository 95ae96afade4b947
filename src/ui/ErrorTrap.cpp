#include "ui/ErrorTrap.h"

#include "ui/ConsoleLog.h"

namespace quarl::ui {

ErrorTrap::ErrorTrap(QString window, MessageBoxes boxes) : window_(std::move(window)), boxes_(std::move(boxes)) {}

QString ErrorTrap::Tag(const char* procedure) const {
  return u'(' + window_ + u':' + QLatin1String(procedure) + u')';
}

void ErrorTrap::ShowTagged(const char* procedure, const Error& error) const {
  boxes_.Plain(error.Description() + Tag(procedure));
}

void ErrorTrap::LogTagged(const char* procedure, const Error& error) const {
  qCWarning(consoleLog).noquote() << error.Description() + Tag(procedure);
}

}  // namespace quarl::ui
