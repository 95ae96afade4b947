#include "transfer/ScheduleWords.h"

#include <nlohmann/json.hpp>

#include "transfer/TransferError.h"

namespace quarl::transfer {
namespace {

using Json = nlohmann::ordered_json;

/// Nothing for a number that has no word.
const char* UnitWord(qint16 deltaType) {
  for (const auto& [unit, word] : kUnitWords) {
    if (static_cast<qint16>(unit) == deltaType) return word;
  }
  return nullptr;
}

Json DateJson(const QDate& date) {
  if (date.isNull()) return nullptr;
  if (date.year() < 1 || date.year() > 9999) {
    throw TransferError(QStringLiteral("A schedule starts in the year %1, which a file cannot say.").arg(date.year()));
  }
  return date.toString(Qt::ISODate).toStdString();
}

Json TimeJson(const QTime& time) {
  if (!time.isValid()) return nullptr;
  return TimeText(time).toStdString();
}

}  // namespace

QString TimeText(const QTime& time) {
  return time.toString(time.msec() == 0 ? Qt::ISODate : Qt::ISODateWithMs);
}

QString ScheduleText(const std::optional<ScheduleRecord>& schedule) {
  if (!schedule) return QStringLiteral("none");
  const char* word = UnitWord(schedule->deltaType);
  const QString unit =
      word != nullptr ? QString::fromLatin1(word) : QStringLiteral("of unit %1").arg(schedule->deltaType);
  const QString date = schedule->startDate.isValid() ? schedule->startDate.toString(Qt::ISODate) : QStringLiteral("?");
  const QString time = schedule->startTime.isValid() ? TimeText(schedule->startTime) : QStringLiteral("?");
  return QStringLiteral("every %1 %2 from %3 %4%5")
      .arg(QString::number(schedule->deltaTime), unit, date, time,
           schedule->enabled ? QString() : QStringLiteral(" (off)"));
}

Json ScheduleJson(const ScheduleRecord& schedule) {
  const char* word = UnitWord(schedule.deltaType);
  return {{"enabled", schedule.enabled},
          {"startDate", DateJson(schedule.startDate)},
          {"startTime", TimeJson(schedule.startTime)},
          {"deltaTime", schedule.deltaTime},
          {"deltaType", word != nullptr ? Json(word) : Json(schedule.deltaType)}};
}

}  // namespace quarl::transfer
