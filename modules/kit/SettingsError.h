#pragma once

#include <string>
#include <utility>

#include "kit/Error.h"

namespace quarl::kit {

/// Settings with which a module cannot work: the key of the field that is wrong, and a sentence.
class SettingsError : public Error {
 public:
  SettingsError(std::string key, const std::string& sentence) : Error(sentence), key_(std::move(key)) {}
  const std::string& Key() const { return key_; }

 private:
  std::string key_;
};

/// For a module's Judge: what reading the settings finds wrong, and the field's key; "" for nothing.
template <typename Read>
std::string Judged(std::string& key, Read read) {
  try {
    static_cast<void>(read());
  } catch (const SettingsError& error) {
    key = error.Key();
    return error.what();
  }
  return {};
}

}  // namespace quarl::kit
