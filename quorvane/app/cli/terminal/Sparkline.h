#pragma once

#include "quorvane/app/messages/HarmlessText.h"

#include <cstddef>
#include <span>
#include <string>

namespace quorvane {

/// The newest of the values, one in each column, the newest at the right; as wide as `columns` with blanks before. A
/// value of `most` and more is as high as a line can be, 0 and less as low.
std::string sparkline(std::span<const double> values, double most, std::size_t columns, CharacterSet characters);

}  // namespace quorvane
