#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/base/Uuid.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// One location that the user asked never to be offered again. It covers that location and everything below it.
struct IgnoreRule {
  Uuid id;
  FilePath path;                           ///< as the user chose it, made absolute
  FilePath canonicalPath;                  ///< standardised, links resolved
  std::optional<std::string> application;  ///< the rule was made for this application's leftovers

  bool operator==(const IgnoreRule&) const = default;
};
QV_JSON_FIELDS(IgnoreRule, id, path, canonicalPath, application)

/// Pretty-printed with sorted keys.
std::string jsonText(const std::vector<IgnoreRule>& rules);

/// The rule that covers a canonical path, if any: whole components are compared, byte by byte.
const IgnoreRule* ruleCovering(const std::vector<IgnoreRule>& rules, const FilePath& canonicalPath);

}  // namespace quorvane
