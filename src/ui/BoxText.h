#pragma once

#include <QString>

namespace quarl::ui {

inline constexpr qsizetype kBoxTextLimit = 1200;  ///< characters that a message box shows at most
inline constexpr qsizetype kBoxLineLimit = 18;    ///< lines of its own that a text keeps at most

/// A text in a form that fits into a message box on any screen: shortened in the middle ("…") where it is too long or
/// has too many lines, with invisible break points in words that are wider than a box. Short texts come back as they
/// are. A shortened text is written whole to the log.
QString FitForBox(const QString& text);

}  // namespace quarl::ui
