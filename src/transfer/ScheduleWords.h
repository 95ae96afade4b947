#pragma once

#include <nlohmann/json_fwd.hpp>

#include <QString>
#include <array>
#include <optional>
#include <utility>

#include "base/ScheduleRecord.h"

namespace quarl::transfer {

/// How files spell the units of a schedule's interval; other numbers stand in them as numbers.
inline constexpr std::array<std::pair<DeltaType, const char*>, 3> kUnitWords{
    {{DeltaType::Minutes, "minutes"}, {DeltaType::Hours, "hours"}, {DeltaType::Days, "days"}}};

/// A time of day in files: "23:59:59", with milliseconds behind it only where there are some.
QString TimeText(const QTime& time);

/// For people: "every 5 minutes from 2026-01-31 00:00:00", "(off)" behind it when not enabled; "none" for nothing.
QString ScheduleText(const std::optional<ScheduleRecord>& schedule);

/// The object that stands for a schedule in files. Throws TransferError for a date that no four-digit year can say.
nlohmann::ordered_json ScheduleJson(const ScheduleRecord& schedule);

}  // namespace quarl::transfer
