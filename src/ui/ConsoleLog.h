#pragma once

#include <QLoggingCategory>

namespace quarl::ui {

/// What the console writes to its log (standard error or the journal): category "quarl.console".
Q_DECLARE_LOGGING_CATEGORY(consoleLog)

}  // namespace quarl::ui
