#include "ui/ConsoleLog.h"

namespace quarl::ui {

Q_LOGGING_CATEGORY(consoleLog, "quarl.console")

}  // namespace quarl::ui
