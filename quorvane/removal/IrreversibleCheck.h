#pragma once

#include "quorvane/removal/CleaningHistory.h"

namespace quorvane {

/// What became of something whose removal was announced and not recorded.
enum class IrreversibleFinding { gone, stillThere, unknown };

/// Looks for it where it was. Never removes anything.
class IrreversibleCheck {
 public:
  virtual ~IrreversibleCheck() = default;

  /// Before the looks of one settling: what the last one learnt may hold no more.
  virtual void begin() = 0;

  /// `unknown` for whatever is not certain. May wait some seconds for who has to be asked.
  virtual IrreversibleFinding look(const CleaningHistoryItem& item) = 0;
};

}  // namespace quorvane
