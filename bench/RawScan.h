#pragma once

#include <QString>
#include <string>
#include <vector>

struct sqlite3;

namespace quarl::bench {

/// The yardstick: the rows of a view read with the database's C interface alone into plain structs, within one read
/// transaction, on a connection that stays open.
class RawScan {
 public:
  explicit RawScan(const QString& path);
  ~RawScan();
  RawScan(const RawScan&) = delete;
  RawScan& operator=(const RawScan&) = delete;

  struct Row {
    int owner, id, type;
    unsigned length;
    std::size_t offset;
  };
  struct Rows {
    std::vector<Row> rows[5];
    std::string texts;
    std::size_t Count() const;
  };
  /// The five ordered queries of the object tree.
  Rows Tree();

  struct ListRow {
    long long numbers[3];
    unsigned lengths[3];
    std::size_t offset;
  };
  struct List {
    std::vector<ListRow> rows;
    std::string texts;
  };
  /// The rows of the list of all servers, and of the log.
  List Servers();
  List Log();

 private:
  void Execute(const char* sql);
  template <typename OnRow>
  void Read(const char* sql, OnRow onRow);
  List ReadList(const char* sql, int numbers, int texts);

  sqlite3* connection_ = nullptr;
};

}  // namespace quarl::bench
