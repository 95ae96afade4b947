#include "tree/ContentFills.h"

#include <array>

namespace quarl::tree {
namespace {

// The images of states or severities: a prefix and a number. Null leaves the bare prefix, which names no image.
class NumberedImages {
 public:
  NumberedImages(NodeImages& images, QString prefix) : images_(images), prefix_(std::move(prefix)) {
    known_.fill(ContentRows::kNoImage);
  }
  quint16 Of(const store::RecordSet& records, int column) {
    return records.IsNull(column) ? images_.NumberOf(prefix_) : Of(records.Integer(column));
  }
  quint16 Of(qint64 number) {
    const auto place = static_cast<std::size_t>(number);
    if (place < known_.size() && known_[place] != ContentRows::kNoImage) return known_[place];
    const quint16 image = images_.NumberOf(prefix_ + QString::number(number));
    if (place < known_.size()) known_[place] = image;
    return image;
  }

 private:
  NodeImages& images_;
  QString prefix_;
  std::array<quint16, 4> known_{};
};

constexpr std::size_t kTextOfARow = 48;  // bytes to begin with

std::string_view TextOrEmpty(const store::RecordSet& records, int column) {
  return records.IsNull(column) ? std::string_view() : records.Utf8(column);
}

}  // namespace

void FillServers(ContentRows& rows, NodeImages& icons, store::RecordSet servers, bool withGroup) {
  NumberedImages images(icons, QStringLiteral("iTEST_STATE"));
  const int id = servers.Column("IDServer");
  const int state = servers.Column("IDTestState");
  const int name = servers.Column("ServerName");
  const int address = servers.Column("ServerIP");
  const int group = withGroup ? servers.Column("GroupName") : 0;
  rows.Reserve(servers.RowCount(), servers.RowCount() * kTextOfARow);
  for (; !servers.Eof(); servers.MoveNext()) {
    rows.AddRow();
    rows.SetKey({NodeKind::Server, static_cast<qint32>(servers.Integer(id))});
    rows.SetImage(servers.IsNull(state) ? images.Of(2) : images.Of(servers, state));
    rows.AppendText(0, servers.Utf8(name));
    rows.AppendText(1, servers.Utf8(address));
    if (withGroup) rows.AppendText(2, TextOrEmpty(servers, group));
  }
}

void FillTests(ContentRows& rows, NodeImages& icons, store::RecordSet tests) {
  NumberedImages images(icons, QStringLiteral("iTEST_STATE"));
  const int id = tests.Column("IDTest");
  const int state = tests.Column("IDTestState");
  const int name = tests.Column("TestName");
  const int execution = tests.Column("LastExecution");
  const int word = tests.Column("TestState");
  const int result = tests.Column("LastResult");
  for (; !tests.Eof(); tests.MoveNext()) {
    rows.AddRow();
    rows.SetKey({NodeKind::Test, static_cast<qint32>(tests.Integer(id))});
    rows.SetImage(images.Of(tests, state));
    rows.AppendText(0, tests.Utf8(name));
    if (!tests.IsNull(execution)) rows.SetDate(1, tests.Integer(execution));
    rows.AppendText(1, " ");
    rows.AppendText(1, TextOrEmpty(tests, word));
    rows.AppendText(1, " - ");
    rows.AppendText(1, TextOrEmpty(tests, result));
  }
}

void FillLog(ContentRows& rows, NodeImages& icons, store::RecordSet log) {
  NumberedImages images(icons, QStringLiteral("iSEVERITY"));
  const int description = log.Column("LogDescription");
  const int severity = log.Column("IDSeverity");
  const int date = log.Column("LogDate");
  rows.Reserve(log.RowCount(), log.RowCount() * kTextOfARow);
  for (; !log.Eof(); log.MoveNext()) {
    rows.AddRow();
    rows.AppendText(0, log.Utf8(description));
    rows.SetImage(images.Of(log, severity));
    rows.SetDate(1, log.Integer(date));
  }
}

}  // namespace quarl::tree
