#pragma once

#include <QString>

namespace quarl::plugins {

/// The English name of a Windows language id, "" for one that is not in the table of common ones.
QString LanguageName(quint16 language);

}  // namespace quarl::plugins
