#pragma once

#include <QString>

namespace quarl::ui {

/// A text as one line for a menu or a cell: line breaks and tabs become blanks, and a text of more than `limit`
/// characters (at least 1) ends there in "…". Never cuts a surrogate pair in two.
QString OneLine(const QString& text, qsizetype limit);

}  // namespace quarl::ui
