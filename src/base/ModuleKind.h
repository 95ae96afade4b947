#pragma once

namespace quarl {

/// The two kinds of plug-in modules.
enum class ModuleKind { Test, Alert };

}  // namespace quarl
