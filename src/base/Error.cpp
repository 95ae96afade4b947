#include "base/Error.h"

namespace quarl {

Error::Error(QString description) : description_(std::move(description)), utf8_(description_.toUtf8()) {}

}  // namespace quarl
