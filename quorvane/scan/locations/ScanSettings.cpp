#include "quorvane/scan/locations/ScanSettings.h"

#include <algorithm>

namespace quorvane {

bool ScanRequest::asksFor(ScanCategory category) const {
  return categories.empty() || std::ranges::find(categories, category) != categories.end();
}

}  // namespace quorvane
