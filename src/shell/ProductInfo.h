#pragma once

#include <QString>

/// What the splash window and the About box say about the program.
namespace quarl::shell::ProductInfo {

/// "Version " and major.minor.revision of the running program.
QString Version();
QString Copyright();
inline constexpr QStringView kName = u"Quarl Console";
inline constexpr QStringView kSupportAddress = u"https://quarl.example/support";
inline constexpr QStringView kWebAddress = u"https://quarl.example/";

}  // namespace quarl::shell::ProductInfo
