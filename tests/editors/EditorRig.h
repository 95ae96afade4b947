#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QTest>
#include <memory>
#include <vector>

#include "editors/EntityCommands.h"
#include "store/StoreFixture.h"
#include "support/DialogDriver.h"
#include "support/FaultyStores.h"
#include "support/Text.h"
#include "tree/TreeBuilder.h"

namespace quarl::editors {

using Command = void (EntityCommands::*)();

/// Texts of message boxes by their wording.
::quarl::testing::ShownBox Stop(const QString& text, const QString& title = QStringLiteral("Quarl Console"));
::quarl::testing::ShownBox Plain(const QString& text);
::quarl::testing::ShownBox Question(const QString& text);

/// Names the cases of a data table by their member "name".
struct CaseName {
  template <typename Info>
  std::string operator()(const Info& info) const {
    return info.param.name;
  }
};

/// A window with a tree over a store in memory, and the commands on both. The store's group 1 "Berlin" has server 3
/// "alpha" (10.0.0.1, tests 1 and 2, alert 1), the root group has server 4 "omega"; group 2 "Moscow" has alert 2.
/// Tests and alerts have the one type "Kind", id 1.
class EditorRig : public ::testing::Test, private QObject, protected tree::SelectionPort, protected CommandPort {
 protected:
  EditorRig();

  // --- The user ---
  /// What a click on a tree node does, without the list.
  void Click(const QString& key);
  void Press(const char* key) { Click(QString::fromLatin1(key)); }
  /// Answers the next dialog by an act on it, and then by one of its buttons.
  void ExpectDialog(const char* name, const std::function<void(QDialog&)>& act, const char* button = "OKButton");
  /// What the user types into a field in place of what was there.
  static void Type(QDialog& dialog, const char* field, const QString& text);
  static QString TextIn(QDialog& dialog, const char* field);
  template <typename Widget>
  static Widget& In(QDialog& dialog, const char* name) {
    auto* found = dialog.findChild<Widget*>(QString::fromLatin1(name));
    if (found == nullptr) throw Error(QStringLiteral("no control %1").arg(QString::fromLatin1(name)));
    return *found;
  }

  // --- What is there then ---
  store::Configuration Stored() { return sql.Configurations().Read().configuration; }
  /// Fails when the tree is another one than a fresh start would show.
  void ExpectTreeLikeFresh();
  QStringList Children(const char* key) const { return nodes.ChildrenOf(QString::fromLatin1(key)); }
  QStringList ChildTexts(const char* key) const;

  // --- Ports ---
  const QString& SelectedKey() const override { return selected; }
  void SetSelectedKey(const QString& key) override { selected = key; }
  void UpdateOptions(const QString& /*key*/, bool /*refill*/) override {}
  void NodeClick(const QString& key) override { selected = key; }
  void ToolbarClick(const QString& button) override;
  QVariant TypeTag(const QString& menuArray, int index) const override;

  store::StoreFolder folder;
  store::SqlStores sql;
  store::FaultyStores stores;
  tree::ObjectTreeModel nodes;
  QWidget window;
  tree::ObjectTree tree;
  QString selected;
  QStringList toolbarClicks;
  std::vector<Qt::CursorShape> pointers;  ///< that the window had, one after another; kNone marks a toolbar click
  static constexpr Qt::CursorShape kNone = Qt::BlankCursor;
  QStringList pinged;
  std::function<bool(const QString&)> ping = [](const QString&) { return true; };
  std::vector<QString> commonErrors;
  tree::Common common;
  EntityCommands commands;
  ::quarl::testing::DialogDriver dialogs;

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void FillStore();
};

}  // namespace quarl::editors
