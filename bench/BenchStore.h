#pragma once

#include <QString>
#include <QTemporaryDir>
#include <memory>

#include "store/sql/SqlStores.h"

namespace quarl::bench {

/// A store file of generated servers, removed with the object: 100 groups, five tests and one alert a server, names in
/// another order than ids, and as many log records as servers. Without servers it is as new.
class BenchStore {
 public:
  explicit BenchStore(int servers);

  const QString& Path() const { return path_; }
  store::SqlStores& Stores() { return *stores_; }
  /// The store of so many servers, made when it is first asked for and kept until the program ends.
  static BenchStore& Of(int servers);

 private:
  QTemporaryDir folder_;
  QString path_;
  std::unique_ptr<store::SqlStores> stores_;
};

}  // namespace quarl::bench
