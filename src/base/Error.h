#pragma once

#include <QString>
#include <exception>

namespace quarl {

/// Base of every error that the project throws. Procedures trap exactly this type; anything else is a defect.
class Error : public std::exception {
 public:
  explicit Error(QString description);
  /// A whole sentence for the user.
  const QString& Description() const noexcept { return description_; }
  /// The description in UTF-8, alive as long as this object.
  const char* what() const noexcept override { return utf8_.constData(); }

 private:
  QString description_;
  QByteArray utf8_;
};

}  // namespace quarl
