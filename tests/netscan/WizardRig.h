#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <functional>

#include "netscan/ScanWizard.h"
#include "netscan/ScriptedScan.h"
#include "store/StoreFixture.h"
#include "support/DialogDriver.h"
#include "support/FaultyStores.h"
#include "support/Text.h"

namespace quarl::netscan {

/// The hands of a user on the open wizard.
class WizardHands {
 public:
  explicit WizardHands(QWidget& wizard) : wizard_(wizard) {}

  template <typename Widget>
  Widget& Find(const char* name) const {
    auto* found = wizard_.findChild<Widget*>(Q(name));
    if (found == nullptr) throw Error(Q("no control ") + Q(name));
    return *found;
  }
  void Click(const char* button) const;
  /// Ticks boxes of page 1 by their names, blank between them.
  void Tick(const char* boxes) const;
  /// Waits for the end of the search.
  void AwaitScan() const;
  /// From page 0 to the end of the search, with these boxes ticked.
  void GoToServers(const char* boxes = "OS1 OS2 OS3") const;
  /// Presses Space on the row of this name, which is there.
  void TickRow(const char* list, const char* name) const;
  /// The rows of a list: the texts of the columns joined by "|", "*" in front where ticked; joined by line feeds.
  std::string Rows(const char* list) const;
  /// The number of the one page that can be seen; -1 when it is not one.
  int VisiblePage() const;
  QWidget& Wizard() const { return wizard_; }

 private:
  QWidget& wizard_;
};

/// A window with a tree over a store: group 1 "Lab" with server 2 "mike" (10.0.0.4), and test types 1 and 2 with the
/// modules ping.dll and http.dll, whose images the tree does not have. The scripted network has a machine of each
/// family, "mike" and one that does not answer.
class WizardRig : public ::testing::Test, protected tree::SelectionPort {
 protected:
  WizardRig();
  /// Opens the wizard for the group "Lab" and hands it to the user, who has to leave it closed.
  void Use(const std::function<void(const WizardHands&)>& user);
  /// The servers of the group with their tests as the store has them: "name address type type", by name.
  std::string Stored(qint32 idGroup = 1);
  /// The same as the tree has them, without addresses.
  std::string InTree() const;

  store::StoreFolder folder;
  store::SqlStores sql;
  store::FaultyStores stores;
  ui::ImageList images;
  tree::ObjectTreeModel nodes;
  QWidget window;
  tree::ObjectTree tree;
  InstallPaths paths;
  ScriptedScan network;
  QString clicked;  ///< the node that was clicked last
  ::quarl::testing::DialogDriver dialogs;

 private:
  const QString& SelectedKey() const override { return clicked; }
  void SetSelectedKey(const QString& key) override { clicked = key; }
  void UpdateOptions(const QString& /*key*/, bool /*refill*/) override {}
  void NodeClick(const QString& key) override { clicked = key; }
};

}  // namespace quarl::netscan
