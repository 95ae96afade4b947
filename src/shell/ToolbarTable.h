#pragma once

#include <array>

namespace quarl::shell {

enum class ButtonStyle { Plain, DropDown };

/// One button of the toolbar.
struct ToolbarRow {
  const char* key;
  const char* toolTip;
  const char* image;  ///< key in KCVImageList and KVCImageListDisabled
  ButtonStyle style = ButtonStyle::Plain;
  bool separatorAfter = false;
  bool elsewhere = true;  ///< its command has a menu item or a key as well; otherwise Tab leads to the button
};

/// The toolbar in its order.
inline constexpr std::array kToolbarRows{
    ToolbarRow{"GroupAdd", "Add group", "bGROUP_ADD"},
    ToolbarRow{"GroupSub", "Remove group", "bGROUP_SUB", ButtonStyle::Plain, true},
    ToolbarRow{"ServerAdd", "Add server", "bSERVER_ADD"},
    ToolbarRow{"ServerSub", "Remove server", "bSERVER_SUB", ButtonStyle::Plain, true},
    ToolbarRow{"TestAdd", "Add test", "bTEST_ADD", ButtonStyle::DropDown},
    ToolbarRow{"TestSub", "Remove Test", "bTEST_SUB", ButtonStyle::Plain, true},
    ToolbarRow{"AlertAdd", "Add alert", "bALERT_ADD", ButtonStyle::DropDown},
    ToolbarRow{"AlertSub", "Remove alert", "bALERT_SUB", ButtonStyle::Plain, true},
    ToolbarRow{"CheckGroup", "Check all tests for the selected group", "bCHECK_GROUP"},
    ToolbarRow{"CheckServer", "Check all tests for the selected server", "bCHECK_SERVER"},
    ToolbarRow{"CheckTest", "Check the selected test", "bCHECK_TEST", ButtonStyle::Plain, true},
    ToolbarRow{"Properties", "Properties", "bPROPERTIES"},
    ToolbarRow{"Refresh", "Refresh", "bREFRESH", ButtonStyle::Plain, true},
    ToolbarRow{"SStart", "Start Quarl service", "bSERVICE_START", ButtonStyle::Plain, false, false},
    ToolbarRow{"SStop", "Stop Quarl service", "bSERVICE_STOP", ButtonStyle::Plain, false, false},
};

}  // namespace quarl::shell
