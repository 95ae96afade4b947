#include "editors/NumberText.h"

#include <QLocale>
#include <QRegularExpression>
#include <cmath>
#include <limits>

#include "base/Error.h"

namespace quarl::editors {
namespace {

QStringView FindNumber(QStringView text) {
  static const QRegularExpression pattern(
      QStringLiteral(R"(^[+-]?(?:[0-9]+(?:\.[0-9]*)?|\.[0-9]+)(?:[eE][+-]?[0-9]+)?)"));
  return pattern.match(text).capturedView();
}

qint16 Round(QStringView number) {
  // Out of a double's range the conversion gives infinity or 0, and either is what is wanted here.
  const double value = std::nearbyint(QLocale::c().toDouble(number));
  if (!(value >= std::numeric_limits<qint16>::min() && value <= std::numeric_limits<qint16>::max())) {
    throw Error(QStringLiteral("Overflow"));
  }
  return static_cast<qint16>(value);
}

}  // namespace

qint16 LeadingNumber(const QString& text) {
  const QString trimmed = text.trimmed();
  const QStringView number = FindNumber(trimmed);
  return number.isEmpty() ? qint16{0} : Round(number);
}

qint16 WholeNumber(const QString& text) {
  const QString trimmed = text.trimmed();
  const QStringView number = FindNumber(trimmed);
  if (number.isEmpty() || number.size() != trimmed.size()) {
    throw Error(QStringLiteral("\"%1\" is not a number.").arg(text.left(80)));
  }
  return Round(number);
}

}  // namespace quarl::editors
