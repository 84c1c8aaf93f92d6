#include "quorvane/scan/backups/PropertyList.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/scan/backups/PropertyListCheck.h"

#include <plist/plist.h>

#include <cstdint>
#include <limits>

namespace quorvane {

namespace {

constexpr std::chrono::seconds dateOrigin{978'307'200};  // 2001-01-01T00:00:00Z

plist_t parsed(std::string_view bytes) {
  plist_t root = nullptr;
  const char* const start = bytes.begin();
  const auto length = static_cast<std::uint32_t>(bytes.size());
  if (bytes.starts_with("bplist")) {
    if (isHarmlessBinaryPropertyList(bytes)) plist_from_bin(start, length, &root);
  } else if (isHarmlessXmlPropertyList(bytes)) {
    plist_from_xml(start, length, &root);
  }
  return root;
}

plist_t valueOf(plist_t dictionary, const char* key, plist_type type) {
  const plist_t value = plist_dict_get_item(dictionary, key);
  return value != nullptr && plist_get_node_type(value) == type ? value : nullptr;
}

}  // namespace

void PropertyList::Release::operator()(void* node) const { plist_free(node); }

Outcome<PropertyList, PropertyListFault> PropertyList::parse(std::string_view bytes) {
  if (bytes.size() > mostBytes) return failure(PropertyListFault::tooLarge);
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  Handle root(parsed(bytes));
  if (!root) return failure(PropertyListFault::malformed);
  if (plist_get_node_type(root.get()) != PLIST_DICT) return failure(PropertyListFault::notADictionary);
  return PropertyList(std::move(root));
}

std::optional<std::string> PropertyList::text(const char* key) const {
  const plist_t value = valueOf(root_.get(), key, PLIST_STRING);
  std::uint64_t length = 0;
  const char* text = value != nullptr ? plist_get_string_ptr(value, &length) : nullptr;
  if (text == nullptr) return std::nullopt;
  return withReplacedInvalidUtf8(std::string_view(text, length));
}

std::optional<bool> PropertyList::boolean(const char* key) const {
  const plist_t value = valueOf(root_.get(), key, PLIST_BOOLEAN);
  if (value == nullptr) return std::nullopt;
  std::uint8_t isTrue = 0;
  plist_get_bool_val(value, &isTrue);
  return isTrue != 0;
}

std::optional<Date> PropertyList::date(const char* key) const {
  const plist_t value = valueOf(root_.get(), key, PLIST_DATE);
  if (value == nullptr) return std::nullopt;
  std::int32_t seconds = 0;
  std::int32_t microseconds = 0;
  plist_get_date_val(value, &seconds, &microseconds);
  // A moment outside the range of 32 bits arrives as one of its ends.
  using Range = std::numeric_limits<std::int32_t>;
  if (seconds == Range::min() || seconds == Range::max()) return std::nullopt;
  const std::chrono::microseconds fraction(seconds < 0 ? -microseconds : microseconds);
  return Date(dateOrigin + std::chrono::seconds(seconds) + fraction);
}

}  // namespace quorvane
