#pragma once

#include <string>

namespace quarl::sdk {

/// A picture as a bitmap resource: 32 bits a pixel with an alpha channel, sides of 1 to 1024 pixels.
/// Throws std::runtime_error when the file is no such PNG.
std::string BitmapOfPng(const std::string& path);

/// The resource tree with one bitmap named "ICON" and one version record, both language neutral. Data entries count
/// from the tree's own start.
std::string ResourceTree(const std::string& bitmap, const std::string& version);

/// The assembler source that puts the bytes into the section .rsrc of a shared object, where neither strip nor the
/// linker's garbage collection drops them.
std::string AssemblerSource(const std::string& resources);

}  // namespace quarl::sdk
