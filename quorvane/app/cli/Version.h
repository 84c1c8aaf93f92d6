#pragma once

#include <string_view>

namespace quorvane {

/// "0.1.0"
std::string_view programVersion();

}  // namespace quorvane
