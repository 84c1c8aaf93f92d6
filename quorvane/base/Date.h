#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// A moment of the wall clock, in UTC. Reaches from 1677 to 2262.
using Date = std::chrono::sys_time<std::chrono::nanoseconds>;

/// The moment this many seconds and nanoseconds after 1970; a moment outside the reach of `Date` becomes its nearest
/// end.
Date dateFromTimestamp(std::int64_t seconds, std::int64_t nanoseconds);

/// The date without its fraction of a second: what a record can hold. Rounds towards the past, except in the first
/// second of all, which `Date` reaches only the rest of.
Date wholeSeconds(Date date);

/// ISO 8601 in UTC and whole seconds, "2026-11-21T05:04:03Z"; `dateFromIsoText` reads every such text.
std::string isoText(Date date);

/// Reads exactly what `isoText` writes; nothing for any other text, a day that does not exist included.
std::optional<Date> dateFromIsoText(std::string_view text);

}  // namespace quorvane
