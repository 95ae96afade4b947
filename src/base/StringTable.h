#pragma once

#include <QString>

namespace quarl {

/// Entries of the string table; the value is the entry's number in resources/strings/strings.tsv.
enum class Text : int {
  ConfirmRemoveServer = 101,
  ConfirmRemoveTest = 102,
  AddServerFailed = 103,
  AddTestFailed = 104,
  TitleWarning = 105,
  TitleStop = 106,
  TitleInfo = 107,
  UpdateServerFailed = 108,
  PingSucceeded = 109,
  PingFailed = 110,
  ServiceRunning = 111,
  ServiceNotInstalled = 112,
  ServiceStopped = 113,
  ServiceStarting = 114,
  ServiceStopping = 115,
  ServicePausing = 116,
  ServicePaused = 117,
  ServiceContinuing = 118,
  SaveLogTitle = 119,
  SaveLogFailed = 120,
  ConfirmClearLog = 121,
  UnitMinutes = 122,
  UnitHours = 123,
  UnitDays = 124,
  RemoveServerFailed = 125,
  RemoveTestFailed = 126,
  AskInstallService = 127,
  ServiceInstalled = 128,
  ServiceInstallFailed = 129,
  AddPluginTitle = 130,
  AddPluginFailed = 131,
  ConfirmRemovePlugin = 132,
  PluginInUse = 133,
  AddAlertFailed = 134,
  RemoveAlertFailed = 135,
  ConfirmRemoveAlert = 136,
  AlertTestSucceeded = 137,
  AlertTestFailed = 138,
  LogCleared = 139,
  AddGroupFailed = 140,
  UpdateGroupFailed = 141,
  ConfirmRemoveGroup = 142,
  RemoveGroupFailed = 143,
};

inline constexpr int kFirstText = 101;
inline constexpr int kLastText = 143;

/// The wording of an entry, trailing blanks included. Throws Error when the table has no such entry.
QString LoadText(Text id);

}  // namespace quarl
