#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/JsonRecord.h"

#include <string>
#include <vector>

namespace quorvane {

/// A removal that nothing can put back, written down before its command runs.
struct IrreversibleRemovalIntent {
  Date announcedAt;
  std::vector<std::string> command;  ///< what was about to be run, to be read by people; never run from here

  bool operator==(const IrreversibleRemovalIntent&) const = default;
};
QV_JSON_FIELDS(IrreversibleRemovalIntent, announcedAt, command)

}  // namespace quorvane
