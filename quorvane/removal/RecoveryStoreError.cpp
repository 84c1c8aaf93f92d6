#include "quorvane/removal/RecoveryStoreError.h"

namespace quorvane {

std::string messageKey(RecoveryStoreFault fault) { return "history.error." + std::string(caseName(fault)); }

}  // namespace quorvane
