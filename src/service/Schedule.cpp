#include "service/Schedule.h"

#include <QDateTime>
#include <algorithm>

namespace quarl::service {
namespace {

constexpr qint64 kMinuteMs = 60'000;
constexpr qint64 kHourMs = 60 * kMinuteMs;
constexpr qint64 kDayMs = 24 * kHourMs;
constexpr qint64 kDaySpreadMs = 10 * kMinuteMs;

qint64 OffsetMs(const QTimeZone& zone, qint64 ms) {
  return zone.offsetFromUtc(QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC)) * qint64{1000};
}

}  // namespace

Phase PhaseOf(qint32 idTest) {
  // Multiples of the golden ratio leave no two neighbours close together and no gap wide.
  constexpr quint64 kGolden = 0x9E37'79B9'7F4A'7C15;
  return static_cast<Phase>((static_cast<quint64>(static_cast<quint32>(idTest)) * kGolden) >> 32);
}

qint64 MomentOf(QDate date, QTime time, const QTimeZone& zone) {
  const qint64 shown = QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch();
  const qint64 before = OffsetMs(zone, shown - kDayMs);
  const qint64 after = OffsetMs(zone, shown + kDayMs);
  const bool exists = OffsetMs(zone, shown - before) != before && OffsetMs(zone, shown - after) == after;
  return exists ? shown - after : shown - before;
}

bool Schedule::HasInterval(const ScheduleRecord& record) {
  return record.deltaTime >= 1 && record.deltaType >= static_cast<qint16>(DeltaType::Minutes) &&
         record.deltaType <= static_cast<qint16>(DeltaType::Days);
}

std::optional<Schedule> Schedule::Make(const ScheduleRecord& record, const QTimeZone& zone) {
  if (!record.enabled || !HasInterval(record)) return std::nullopt;
  return Schedule(record, zone);
}

Schedule::Schedule(const ScheduleRecord& record, const QTimeZone& zone)
    : zone_(zone),
      startDate_(record.startDate.isValid() ? record.startDate : QDate(1970, 1, 1)),
      startTime_(record.startTime.isValid() ? record.startTime : QTime(0, 0)) {
  const auto unit = static_cast<DeltaType>(record.deltaType);
  if (unit == DeltaType::Days) {
    days_ = record.deltaTime;
    spreadMs_ = kDaySpreadMs;
    return;
  }
  startMs_ = MomentOf(startDate_, startTime_, zone_);
  intervalMs_ = record.deltaTime * (unit == DeltaType::Hours ? kHourMs : kMinuteMs);
  spreadMs_ = intervalMs_;
}

qint64 Schedule::Next(qint64 fromMs, Phase phase) const {
  constexpr double kPhases = 4'294'967'296.0;
  const auto shift = static_cast<qint64>(static_cast<double>(spreadMs_) * (phase / kPhases));
  const qint64 from = fromMs - shift;
  if (days_ > 0) return NextDay(from) + shift;
  const qint64 turns = from <= startMs_ ? 0 : (from - startMs_ + intervalMs_ - 1) / intervalMs_;
  return startMs_ + turns * intervalMs_ + shift;
}

qint64 Schedule::NextDay(qint64 fromMs) const {
  const QDate day = QDateTime::fromMSecsSinceEpoch(fromMs, zone_).date();
  // Around a change of the clocks the moment of a day can lie on the day before or after.
  qint64 turns = std::max<qint64>(0, startDate_.daysTo(day) / days_ - 1);
  for (;; ++turns) {
    const qint64 moment = MomentOf(startDate_.addDays(turns * days_), startTime_, zone_);
    if (moment >= fromMs) return moment;
  }
}

const ScheduleRecord* EffectiveSchedule(const ScheduleRecord* server, const ScheduleRecord* group,
                                        const ScheduleRecord* byDefault) {
  for (const ScheduleRecord* record : {server, group, byDefault}) {
    if (record && record->enabled) return record;
  }
  return nullptr;
}

}  // namespace quarl::service
