#pragma once

#include <vector>

#include "kit/Form.h"

namespace quarl::alerts {

/// The fields "checkCertificate" and "authorities", for Curl::SetCertificateCheck.
std::vector<kit::Field> CertificateFields(const char* group, const char* help);

}  // namespace quarl::alerts
