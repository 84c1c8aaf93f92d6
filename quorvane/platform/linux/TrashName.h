#pragma once

#include "quorvane/base/Uuid.h"

#include <string>
#include <string_view>

namespace quorvane {

/// How many names `receive` tries for an item before it gives up.
inline constexpr unsigned mostTrashNames = 1'100;
/// How many of them are numbered, and so may have been given to anybody.
inline constexpr unsigned numberedTrashNames = 100;

/// The names an item can get in the Trash, `attempt` counted from 1: "name.ext", "name.2.ext", and so on; from the
/// 101st on names that only this move uses, so that they can be found again without looking through the folder. Each
/// leaves room for the suffix of its note: a name too long for that loses the end of its stem, no part of a UTF-8
/// character.
std::string trashName(std::string_view name, const Uuid& move, unsigned attempt);

}  // namespace quorvane
