#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace quarl::sdk {

/// What a module says about itself; all texts UTF-8, empty ones are left out of the record.
struct ModuleDescription {
  std::array<uint16_t, 4> version = {};
  std::string versionText;
  std::string product;
  std::string company;
  std::string description;
  std::string copyright;
  std::string fileName;
};

/// UTF-16, little-endian, without a NUL at the end. Throws std::runtime_error for bytes that are no UTF-8.
std::string Utf16(const std::string& utf8);

/// The version resource. Throws std::runtime_error when a text is too long for it.
std::string VersionRecord(const ModuleDescription& module);

}  // namespace quarl::sdk
