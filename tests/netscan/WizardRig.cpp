#include "netscan/WizardRig.h"

#include <arpa/inet.h>

#include "plugins/contract/ModuleFile.h"
#include "tree/TreeBuilder.h"
#include "ui/PictureIcon.h"

namespace quarl::netscan {

// --- The user ---

void WizardHands::Click(const char* button) const {
  auto& found = Find<QAbstractButton>(button);
  ASSERT_TRUE(found.isEnabled() && found.isVisible()) << button;
  QTest::mouseClick(&found, Qt::LeftButton);
}

void WizardHands::Tick(const char* boxes) const {
  for (const QString& box : Q(boxes).split(u' ', Qt::SkipEmptyParts))
    QTest::keyClick(&Find<QCheckBox>(box.toUtf8().constData()), Qt::Key_Space);
}

void WizardHands::AwaitScan() const {
  const auto& next = Find<QPushButton>("Avanti");
  ASSERT_TRUE(QTest::qWaitFor([&] { return next.isEnabled(); }, 4000)) << "the search does not end";
}

void WizardHands::GoToServers(const char* boxes) const {
  Click("Avanti");
  Tick(boxes);
  Click("Avanti");
  AwaitScan();
}

void WizardHands::TickRow(const char* list, const char* name) const {
  auto& found = Find<QTreeWidget>(list);
  const auto rows = found.findItems(Q(name), Qt::MatchExactly);
  ASSERT_EQ(rows.size(), 1) << name;
  found.setCurrentItem(rows[0]);
  QTest::keyClick(&found, Qt::Key_Space);
}

std::string WizardHands::Rows(const char* list) const {
  const auto& found = Find<QTreeWidget>(list);
  QStringList rows;
  for (int row = 0; row < found.topLevelItemCount(); ++row) {
    const QTreeWidgetItem& item = *found.topLevelItem(row);
    QStringList texts;
    for (int column = 0; column < found.columnCount(); ++column) texts += item.text(column);
    rows += (item.checkState(0) == Qt::Checked ? Q("*") : QString()) + texts.join(u'|');
  }
  return rows.join(u'\n').toStdString();
}

int WizardHands::VisiblePage() const {
  int visible = -1;
  for (int page = 0; page < WizardControls::kPageCount; ++page) {
    if (!Find<QFrame>(qPrintable(Q("WizardFrame_%1").arg(page))).isVisible()) continue;
    if (visible >= 0) return -1;
    visible = page;
  }
  return visible;
}

// --- The rig ---

WizardRig::WizardRig()
    : sql([this] {
        store::SqlSetup setup = folder.Setup();
        setup.inspector = plugins::InspectModule;
        return setup;
      }()),
      stores(sql),
      nodes([this](const QString& key) { return images.Icon(key); }),
      tree(nodes, &window),
      paths(folder.Paths()) {
  for (const char* key : {"iSERVERGROUP", "iSERVER", "iTEST", "iALERT", "iLOGS"})
    images.Add(Q(key), ui::PictureIcon(Q(key)));
  for (const char* module : {"ping.dll", "http.dll"})
    EXPECT_TRUE(sql.System().AddTestType(Q(QUARL_LAYOUT_DIR "/plugins/tests/") + Q(module), Q(module)));
  EXPECT_EQ(sql.Groups().AddGroup(Q("Lab"), QString()), 1);
  EXPECT_EQ(sql.Servers().AddServer(Q("mike"), Q("10.0.0.4"), 1), 2);
  tree::TreeBuilder(sql, nodes, [](const QString& text) { ADD_FAILURE() << text.toStdString(); }).LoadTree();
  tree.Select(Q("_GROUP_1"));
  window.resize(300, 400);
  tree.resize(300, 400);
  window.show();
  network.machines = {
      Machine(Q("alpha"), "10.0.0.1", Family::Server),       Machine(Q("zulu"), "10.0.0.2", Family::Workstation),
      Machine(Q("november"), "10.0.0.3", Family::Windows98), Machine(Q("MIKE"), "10.0.0.40", Family::Server),
      Machine(Q("quiet"), "10.0.0.5", Family::Server),       Machine(Q("nowhere"), "", Family::Server)};
  network.silent = {inet_addr("10.0.0.5")};
}

void WizardRig::Use(const std::function<void(const WizardHands&)>& user) {
  dialogs.Expect(Q("ScanWizard"), [&](QWidget& widget) {
    try {
      user(WizardHands(widget));
    } catch (const Error& error) {
      ADD_FAILURE() << error.what();
    }
    if (widget.isVisible()) widget.close();
  });
  ScanWizard({&window, stores, tree, *this, paths, images, [this] { return network.Setup(); }}).Run();
  dialogs.Verify();
}

std::string WizardRig::Stored(qint32 idGroup) {
  QStringList lines;
  for (auto servers = sql.Servers().GetServersByGroup(idGroup); !servers.Eof(); servers.MoveNext()) {
    const QString types =
        store::Column(sql.Tests().GetTestsByServer(servers.Value("IDServer").value<qint32>()), "IDTestType");
    lines +=
        (servers.Value("ServerName").toString() + u' ' + servers.Value("ServerIP").toString() + u' ' + types).trimmed();
  }
  return lines.join(u'\n').toStdString();
}

std::string WizardRig::InTree() const {
  QStringList lines;
  for (const QString& server : nodes.ChildrenOf(Q("_GROUP_1"))) {
    QString line = nodes.TextOf(server);
    for (const QString& tests : nodes.ChildrenOf(server))
      for (const QString& test : nodes.ChildrenOf(tests))
        line += u' ' + nodes.TextOf(test) + u'(' + nodes.ImageKeyOf(test) + u')';
    lines += line;
  }
  return lines.join(u'\n').toStdString();
}

}  // namespace quarl::netscan
