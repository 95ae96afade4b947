#pragma once

#include <QString>
#include <string>

namespace quarl::transfer {

/// The text with every character escaped that would not show as itself on a terminal: controls (a line feed becomes
/// "\n", escape "\u001b"), line and paragraph separators, the characters that turn the direction of what follows,
/// and halves of surrogate pairs. All else stays, so the result is for people and not to be read back.
QString VisibleText(const QString& text);

/// The same for JSON text, where such characters occur in strings only: they become \u escapes, so the text says the
/// same to a parser.
std::string VisibleJson(const std::string& utf8);

}  // namespace quarl::transfer
