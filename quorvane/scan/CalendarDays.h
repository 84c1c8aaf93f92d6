#pragma once

#include "quorvane/base/Date.h"

namespace quorvane {

/// The same time of day this many calendar days earlier, in the local time zone: where the clock was changed in
/// between, that is an hour more or less than the days would make.
Date calendarDaysBefore(Date date, int days);

}  // namespace quorvane
