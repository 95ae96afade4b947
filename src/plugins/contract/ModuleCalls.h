#pragma once

#include <QString>

#include "base/InstallPaths.h"

namespace quarl::plugins {

/// The operations of the two helper libraries, TestHelper and AlertHelper, which load a plug-in module and forward the
/// call to it.
///
/// A module path is a base folder followed by the product's own path texts ("...\plugins\tests\ping.dll"). A text
/// crosses as a narrow, NUL-terminated buffer of exactly its own length in UTF-8 and comes back at that length: each
/// argument holds afterwards what the module left in its buffer. Results are the module's own 16-bit integers.
///
/// Throws ModuleError for a helper or module that is missing or cannot be loaded, that lacks the operation or has
/// another interface number, that crashed, wrote past a buffer or left text that is no UTF-8. Arguments are unchanged
/// then. The calls return when the module has answered; the user-interface thread keeps painting meanwhile.
class ModuleCalls {
 public:
  virtual ~ModuleCalls() = default;

  /// Shows the module's own about box.
  virtual qint16 About(ModuleKind kind, QString& modulePath) = 0;
  /// The number of bytes that the module's properties may take. Compare and pad by the narrow length of a text, its
  /// length in UTF-8 (text.toUtf8().size()), which is above QString's where letters are not ASCII.
  virtual qint16 GetBufferSize(ModuleKind kind, QString& modulePath) = 0;
  /// Shows the module's property dialog. 0: confirmed, properties holds the new text.
  virtual qint16 SetProperties(ModuleKind kind, QString& modulePath, QString& serverName, QString& serverAddress,
                               QString& properties) = 0;
  /// Delivers a message through an alert module. 0: delivered, else resultText says why not.
  virtual qint16 Alert(QString& modulePath, QString& serverName, QString& serverAddress, QString& subject,
                       QString& message, QString& properties, QString& resultText) = 0;
};

}  // namespace quarl::plugins
