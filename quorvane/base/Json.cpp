#include "quorvane/base/Json.h"

namespace quorvane {

namespace {

constexpr std::size_t largestText = std::size_t{64} << 20;

}  // namespace

std::string printedJson(const Json& json) { return json.dump(2) + "\n"; }

Outcome<Json, JsonError> parsedJson(std::string_view text) {
  if (text.size() > largestText) return failure(JsonError{JsonFault::tooLarge, {}});
  Json json = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (json.is_discarded()) return failure(JsonError{JsonFault::malformed, {}});
  return json;
}

namespace json {

JsonError below(std::string_view step, const JsonError& inner) {
  std::string path(step);
  if (!inner.path.empty()) (path += '.') += inner.path;
  return {inner.fault, std::move(path)};
}

std::optional<FilePath> pathFromText(std::string_view text) {
  if (!text.starts_with('/')) return pathFromFileUrl(text);
  if (text.contains('\0')) return std::nullopt;
  return FilePath{std::string(text)};
}

}  // namespace json

}  // namespace quorvane
