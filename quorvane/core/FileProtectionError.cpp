#include "quorvane/core/FileProtectionError.h"

namespace quorvane {

std::string messageKey(FileProtectionError error) { return "protection.error." + std::string(caseName(error)); }

}  // namespace quorvane
