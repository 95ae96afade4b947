#pragma once

#include <QString>

namespace quarl::store {
class RecordSet;
class Stores;
}  // namespace quarl::store

namespace quarl::shell {

struct MainControls;

/// The "Add test" and "Add alert" menus and drop-downs, one entry for each installed type. Entry n of a drop-down and
/// element n of a menu array stand for the same type; an element carries the type's id as its data.
class TypeMenus {
 public:
  TypeMenus(const MainControls& controls, store::Stores& stores) : controls_(controls), stores_(stores) {}
  /// Builds them anew. A StoreError leaves them filled as far as they got.
  void LoadMenu();

 private:
  struct Row {
    qint32 id;
    QString name;
    int index;
  };
  void Clear(const QString& item) const;
  void ClearDropDown(const QString& button) const;
  void SetElement(const QString& item, const QString& array, const Row& row) const;
  void AddEntry(const QString& button, const QString& prefix, const Row& row) const;

  const MainControls& controls_;
  store::Stores& stores_;
};

}  // namespace quarl::shell
