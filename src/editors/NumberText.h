#pragma once

#include <QString>

namespace quarl::editors {

/// The decimal number at the beginning of a text, after blanks: sign, digits, point, exponent; what follows is not
/// looked at, and a text without number gives 0. Rounded to the nearest whole number, halves to the even one.
/// Throws Error "Overflow" outside -32768 to 32767.
qint16 LeadingNumber(const QString& text);

/// A text that is such a number as a whole, blanks around it apart; rounded and bounded the same way.
/// Throws Error for any other text.
qint16 WholeNumber(const QString& text);

}  // namespace quarl::editors
