// quarl-rescompile: writes the assembler source that carries a module's version record and picture.

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <tuple>

#include "ResourceWriter.h"
#include "VersionRecord.h"

namespace {

using Options = std::map<std::string, std::string>;

constexpr const char* kUsage =
    "usage: quarl-rescompile --output FILE.s --icon FILE.png --file NAME.dll --product TEXT --version N[.N[.N[.N]]]\n"
    "                        [--company TEXT] [--description TEXT] [--copyright TEXT]\n";

Options ReadOptions(int count, char** arguments) {
  Options options = {{"--output", ""},  {"--icon", ""},    {"--file", ""},        {"--product", ""},
                     {"--version", ""}, {"--company", ""}, {"--description", ""}, {"--copyright", ""}};
  for (int i = 1; i < count; i += 2) {
    const auto option = options.find(arguments[i]);
    if (option == options.end()) throw std::invalid_argument("unknown option " + std::string(arguments[i]));
    if (i + 1 == count) throw std::invalid_argument(option->first + " needs a value");
    option->second = arguments[i + 1];
  }
  for (const char* needed : {"--output", "--icon", "--file", "--product", "--version"}) {
    if (options[needed].empty()) throw std::invalid_argument(std::string(needed) + " is missing");
  }
  return options;
}

std::array<uint16_t, 4> ReadVersion(const std::string& text) {
  std::array<uint16_t, 4> version = {};
  size_t part = 0;
  size_t at = 0;
  for (;;) {
    const size_t end = std::min(text.find('.', at), text.size());
    const std::string digits = text.substr(at, end - at);
    const bool number = !digits.empty() && digits.size() <= 5 && digits.find_first_not_of("0123456789") == digits.npos;
    if (part == version.size() || !number || std::stoul(digits) > 0xffff) {
      throw std::invalid_argument("--version takes one to four numbers of up to 65535, not " + text);
    }
    version[part++] = static_cast<uint16_t>(std::stoul(digits));
    if (end == text.size()) return version;
    at = end + 1;
  }
}

void Run(const Options& options) {
  quarl::sdk::ModuleDescription module;
  module.versionText = options.at("--version");
  module.version = ReadVersion(module.versionText);
  module.product = options.at("--product");
  module.company = options.at("--company");
  module.description = options.at("--description");
  module.copyright = options.at("--copyright");
  module.fileName = options.at("--file");
  const std::string tree =
      quarl::sdk::ResourceTree(quarl::sdk::BitmapOfPng(options.at("--icon")), quarl::sdk::VersionRecord(module));
  std::ofstream output(options.at("--output"), std::ios::binary | std::ios::trunc);
  output << quarl::sdk::AssemblerSource(tree);
  output.close();
  if (!output) {
    std::ignore = std::remove(options.at("--output").c_str());
    throw std::runtime_error("cannot write " + options.at("--output"));
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(ReadOptions(argc, argv));
    return 0;
  } catch (const std::invalid_argument& error) {
    std::cerr << "quarl-rescompile: " << error.what() << '\n' << kUsage;
    return 2;
  } catch (const std::exception& error) {
    std::cerr << "quarl-rescompile: " << error.what() << '\n';
    return 1;
  }
}
