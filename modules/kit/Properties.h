#pragma once

#include <string>
#include <string_view>

#include "kit/Form.h"

namespace quarl::kit {

/// The properties string of a record of a bundled module, versioned JSON:
///   {"format":1,"module":"ping","values":{...},"secrets":{...}}
/// Members that this version does not know survive Read and Text. Secret fields stand in "secrets".
class Properties {
 public:
  /// Never throws. Text up to the first NUL counts. Of a text that is empty all values are the fields' standards; of
  /// one that is broken, newer or another module's too, and Note() says so; a value that is missing or may not stand in
  /// its field is replaced by the standard and named in Note() (missing ones are not). An empty value of a required
  /// field is kept. @param form must outlive the result.
  static Properties Read(std::string_view text, const Form& form);

  /// One or more sentences for the user about what could not be taken over; "" when all is well.
  const std::string& Note() const { return note_; }

  /// The value of a field of the form, secret or not.
  const Json& Value(std::string_view key) const;
  std::string Text(std::string_view key) const;
  long long Integer(std::string_view key) const;
  double Decimal(std::string_view key) const;
  bool Flag(std::string_view key) const;
  std::vector<std::string> List(std::string_view key) const;

  /// All fields' values, secret ones among them, as a form shows them.
  Json Values() const;
  /// Takes over the values of a form, all but those that may not stand in their fields; unknown keys are ignored.
  void SetValues(const Json& values);
  /// The string to store.
  std::string ToText() const;

 private:
  void ReplaceDefects();

  const Form* form_ = nullptr;
  Json document_;
  Json values_;
  std::string note_;
};

}  // namespace quarl::kit
