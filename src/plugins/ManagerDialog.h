#pragma once

#include <QDialog>
#include <QPushButton>
#include <QTreeWidget>

#include "plugins/ManagerContext.h"
#include "ui/ErrorTrap.h"
#include "ui/ImageList.h"

namespace quarl::plugins {

/// The names, texts and store operations of one kind of modules.
struct ManagerKind {
  ModuleKind kind;
  const char* window;
  const char* caption;
  const char* label;
  const char* column;  ///< title of the first column
  const char* idField;
  store::RecordSet (store::SystemConfig::*types)();
  bool (store::SystemConfig::*add)(const QString& moduleFile, const QString& productName);
  bool (store::SystemConfig::*remove)(qint32 id);
};

/// The dialog that lists the installed modules of one kind, adds and removes them and shows their about boxes. Its rows
/// come from the store, what they say about a module from the module's file; a file that is missing or says nothing
/// gives a row of empty cells. Modal, user-interface thread only.
class ManagerDialog : public QDialog {
 public:
  /// Reads the list and shows the dialog until the user closes it. Unexpected errors have been shown then.
  void Run();

 protected:
  /// @param kind must outlive the dialog.
  ManagerDialog(const ManagerKind& kind, const ManagerContext& context);

 private:
  void BuildControls();
  QWidget* BuildButtons();
  void Form_Load();
  void FillList();
  void addModule(const QString& path, int row, qint32 id, const QString& module);
  void addPlugin_Click();
  void RemovePlugin_Click();
  void pluginList_ItemClick();
  void About_Click();
  void OKButton_Click();

  QString AskModuleFile();
  void AddModuleFile(const QString& file);
  void RemoveSelected();
  store::RecordSet Types() const { return (context_.stores.System().*kind_.types)(); }
  /// The path text of a module in the application folder. Throws Error for a name that is no file name.
  QString PathText(const QString& module) const;
  /// The native path; "" for such a name.
  QString FileOf(const QString& module) const;
  QTreeWidgetItem* SelectedRow() const;
  void SelectRow(int row);
  void FitColumns();
  /// The trap with its boxes over the owner as long as the dialog is not shown, else the dialog's own.
  ui::ErrorTrap TrapOverVisible();

  const ManagerKind& kind_;
  ManagerContext context_;
  ui::MessageBoxes boxes_;
  ui::ErrorTrap trap_;
  ui::ImageList pluginImgList_;
  QTreeWidget* pluginList_;
  QPushButton* addPlugin_ = nullptr;
  QPushButton* RemovePlugin_ = nullptr;
  QPushButton* About_ = nullptr;
  QString lastFolder_;
};

}  // namespace quarl::plugins
