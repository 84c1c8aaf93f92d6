#pragma once

#include <string>
#include <string_view>

namespace quorvane {

/// The keys that send one byte, out of what is typed; those that send several, as arrows do, and those with Alt are
/// passed over, also where they come in pieces.
class PlainKeys {
 public:
  /// The plain keys in what was typed next. An escape at the end of it alone may be the key itself or the beginning of
  /// another: what comes next tells.
  std::string take(std::string_view typed);

 private:
  std::string unfinished_;  ///< the beginning of a key
};

}  // namespace quorvane
