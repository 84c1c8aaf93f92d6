#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// The full identifiers of the build cache that the client says a prune removed; none where it removed nothing. Nothing
/// at all for a text of any other form than the client's.
std::optional<std::vector<std::string>> prunedBuildCache(std::string_view output);

}  // namespace quorvane
