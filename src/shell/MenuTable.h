#pragma once

#include <array>

namespace quarl::shell {

/// One line of the menu bar; see kMenuRows.
struct MenuRow {
  const char* name;
  const char* caption;             ///< "-" is a separator
  const char* parent;              ///< name of the menu that it stands in; "" is the menu bar
  const char* shortcut = nullptr;  ///< portable text
  const char* array = nullptr;     ///< the menu array that fills the item's own menu
};

/// The menu bar in its order. Parents stand before what is in them.
inline constexpr std::array kMenuRows{
    MenuRow{"mFile", "&File", ""},
    MenuRow{"mTestPlugin", "Test Plug-ins", "mFile"},
    MenuRow{"mAlertPlugin", "Alert Plug-ins", "mFile"},
    MenuRow{"mFileSeparator", "-", "mFile"},
    MenuRow{"mQuit", "Quit", "mFile", "Ctrl+Q"},
    MenuRow{"mGroup", "Group", ""},
    MenuRow{"mGroupProperties", "Properties", "mGroup"},
    MenuRow{"mGroupSeparator3", "-", "mGroup"},
    MenuRow{"mGroupAdd", "Add group", "mGroup"},
    MenuRow{"mGroupRemove", "Remove group", "mGroup"},
    MenuRow{"mGroupSeparator0", "-", "mGroup"},
    MenuRow{"mGroupAddServer", "Add server", "mGroup"},
    MenuRow{"mGroupScanNet", "Scan Network ...", "mGroup"},
    MenuRow{"mGroupSeparator1", "-", "mGroup"},
    MenuRow{"mGroupAddAlert", "Add alert", "mGroup", nullptr, "mGroupAlert"},
    MenuRow{"mGroupSeparator2", "-", "mGroup"},
    MenuRow{"mGroupCheck", "Check group", "mGroup"},
    MenuRow{"mServer", "&Server", ""},
    MenuRow{"mServerProperties", "Properties", "mServer"},
    MenuRow{"mSeparator", "-", "mServer"},
    MenuRow{"mServerRemove", "Remove server", "mServer"},
    MenuRow{"g", "-", "mServer"},
    MenuRow{"mServerAddTest", "Add test", "mServer", nullptr, "mServerTest"},
    MenuRow{"mServerAddAlert", "Add alert", "mServer", nullptr, "mServerAlert"},
    MenuRow{"r", "-", "mServer"},
    MenuRow{"mServerCheck", "Check server", "mServer"},
    MenuRow{"mTest", "&Test", ""},
    MenuRow{"mTestProperties", "Properties", "mTest"},
    MenuRow{"mTestRename", "Rename", "mTest"},
    MenuRow{"z", "-", "mTest"},
    MenuRow{"mTestRemove", "Remove test", "mTest"},
    MenuRow{"q", "-", "mTest"},
    MenuRow{"mTestCheck", "Check test", "mTest"},
    MenuRow{"mAlert", "&Alert", ""},
    MenuRow{"mAlertProperties", "Properties", "mAlert"},
    MenuRow{"mAlertRename", "Rename", "mAlert"},
    MenuRow{"mAlertSeparator1", "-", "mAlert"},
    MenuRow{"mAlertRemove", "Remove Alert", "mAlert"},
    MenuRow{"mAlertSeparator2", "-", "mAlert"},
    MenuRow{"mAlertTest", "Test alert", "mAlert"},
    MenuRow{"mLog", "&Log", ""},
    MenuRow{"mLogClear", "Clear logs", "mLog"},
    MenuRow{"mLogSave", "Save logs", "mLog"},
    MenuRow{"mInfo", "&?", ""},
    MenuRow{"mHelpGuide", "Help", "mInfo"},
    MenuRow{"mHelpSeparator", "-", "mInfo"},
    MenuRow{"mAbout", "About Quarl ...", "mInfo"},
};

}  // namespace quarl::shell
