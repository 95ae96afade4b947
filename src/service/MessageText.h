#pragma once

#include "service/AlertPolicy.h"

namespace quarl::service {

// The words in which a change is told. Names and results come from the store and from modules: in a line of its own
// each is one line, whatever it holds.

/// One line, "PROBLEM north: Echo failed".
QString SubjectOf(const StateChange& change);
/// Lines that end in "\n".
QString TextOf(const StateChange& change, const PlanIndex& plan, const QTimeZone& zone);
/// The same for everything about one outage of one server: letters, digits, '-'.
QString ThreadOf(const QString& storeId, const StateChange& change);
/// The record in the log.
QString LogLineOf(const StateChange& change);
/// A text on one line without control characters.
QString OneLine(const QString& text);
/// "2024-05-01 12:00:03 +02:00"
QString MomentText(qint64 ms, const QTimeZone& zone);

}  // namespace quarl::service
