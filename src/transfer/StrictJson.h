#pragma once

#include <nlohmann/json_fwd.hpp>

#include <QByteArray>

namespace quarl::transfer {

/// Parses a JSON text whole. Throws TransferError, naming line and column or the JSON pointer, for text that is
/// empty or no JSON or not UTF-8, for anything after the value, for a key twice in one object, and for nesting deeper
/// than kDeepestNesting.
nlohmann::json ParseStrictJson(const QByteArray& text);

inline constexpr std::size_t kDeepestNesting = 16;

}  // namespace quarl::transfer
