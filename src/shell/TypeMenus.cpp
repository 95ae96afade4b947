#include "shell/TypeMenus.h"

#include "shell/MainControls.h"
#include "store/Stores.h"
#include "ui/OneLine.h"

namespace quarl::shell {
namespace {

constexpr qsizetype kLongestName = 60;

// A menu would read "&" as a mnemonic and a tab as the beginning of a shortcut.
QString MenuText(const QString& name) {
  return ui::OneLine(name, kLongestName).replace(u'&', QStringLiteral("&&"));
}

}  // namespace

void TypeMenus::LoadMenu() {
  const auto addTest = QStringLiteral("mServerAddTest");
  Clear(addTest);
  ClearDropDown(QStringLiteral("TestAdd"));
  store::RecordSet tests = stores_.System().GetTestTypes();
  for (int index = 1; !tests.Eof(); tests.MoveNext(), ++index) {
    const Row row{tests.Value("IDTestType").value<qint32>(), tests.Value("TestType").toString(), index};
    SetElement(addTest, QStringLiteral("mServerTest"), row);
    AddEntry(QStringLiteral("TestAdd"), QStringLiteral("TEST_"), row);
  }
  controls_.Item(addTest)->setEnabled(true);

  const auto addServerAlert = QStringLiteral("mServerAddAlert");
  const auto addGroupAlert = QStringLiteral("mGroupAddAlert");
  Clear(addServerAlert);
  Clear(addGroupAlert);
  ClearDropDown(QStringLiteral("AlertAdd"));
  store::RecordSet alerts = stores_.System().GetAlertTypes();
  for (int index = 1; !alerts.Eof(); alerts.MoveNext(), ++index) {
    const Row row{alerts.Value("IDAlertType").value<qint32>(), alerts.Value("AlertType").toString(), index};
    SetElement(addServerAlert, QStringLiteral("mServerAlert"), row);
    SetElement(addGroupAlert, QStringLiteral("mGroupAlert"), row);
    AddEntry(QStringLiteral("AlertAdd"), QStringLiteral("ALERT_"), row);
  }
  controls_.Item(addServerAlert)->setEnabled(true);
  controls_.Item(addGroupAlert)->setEnabled(true);
}

// Element 1 always stays; without a type it has no text.
void TypeMenus::Clear(const QString& item) const {
  const QList<QAction*> elements = controls_.Menu(item)->actions();
  elements.first()->setText(QString());
  elements.first()->setData(QVariant());
  for (qsizetype index = elements.size() - 1; index > 0; --index) delete elements.at(index);
}

void TypeMenus::ClearDropDown(const QString& button) const {
  const QList<QAction*> entries = controls_.DropDown(button)->actions();
  for (qsizetype index = entries.size() - 1; index >= 0; --index) delete entries.at(index);
}

void TypeMenus::SetElement(const QString& item, const QString& array, const Row& row) const {
  QMenu* menu = controls_.Menu(item);
  QAction* element = row.index == 1 ? menu->actions().first() : menu->addAction(QString());
  element->setObjectName(MenuElementName(array, row.index));
  element->setText(MenuText(row.name));
  element->setData(row.id);
}

void TypeMenus::AddEntry(const QString& button, const QString& prefix, const Row& row) const {
  QAction* entry = controls_.DropDown(button)->addAction(MenuText(row.name));
  entry->setObjectName(prefix + QString::number(row.id));
}

}  // namespace quarl::shell
