#include "alerts/common/CertificateFields.h"

namespace quarl::alerts {

std::vector<kit::Field> CertificateFields(const char* group, const char* help) {
  return {
      {.key = "checkCertificate",
       .label = "Check the certificate",
       .type = kit::FieldType::Boolean,
       .standard = true,
       .group = group,
       .help = help},
      {.key = "authorities",
       .label = "Authorities",
       .group = group,
       .help = "File in PEM form with the authorities to trust; empty for those of the system.",
       .enabledWhen = kit::Condition{"checkCertificate", true}},
  };
}

}  // namespace quarl::alerts
