#pragma once

#include <QString>
#include <functional>

namespace quarl::store {

/// What the store asks about a file before it records it as a plug-in module. The answer is "" when the file is a
/// whole, readable module with a picture, else one sentence that says what is wrong with it. It never throws.
using ModuleInspector = std::function<QString(const QString& path)>;

}  // namespace quarl::store
