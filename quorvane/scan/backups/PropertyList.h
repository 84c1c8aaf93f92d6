#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/Date.h"
#include "quorvane/base/Outcome.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// Why bytes were refused as a property list.
enum class PropertyListFault {
  tooLarge,        ///< more than `PropertyList::mostBytes`
  malformed,       ///< neither form of a property list, damaged, or made to exhaust its reader
  notADictionary,  ///< its outermost value is something else
};
QV_CASE_NAMES(PropertyListFault, tooLarge, malformed, notADictionary)

/// The outermost dictionary of a property list from any source. Each lookup gives nothing for a key that is missing or
/// whose value has another type. Belongs to one thread.
class PropertyList {
 public:
  static constexpr std::size_t mostBytes = std::size_t{8} << 20;

  /// Reads the binary form ("bplist00") or the XML form, UTF-8.
  static Outcome<PropertyList, PropertyListFault> parse(std::string_view bytes);

  /// Always valid UTF-8: bytes that are not become U+FFFD.
  std::optional<std::string> text(const char* key) const;

  std::optional<bool> boolean(const char* key) const;

  /// Microseconds in the binary form, whole seconds in XML. Nothing for a moment outside 1932-12-14 to 2069-01-18.
  std::optional<Date> date(const char* key) const;

 private:
  struct Release {
    void operator()(void* node) const;
  };
  using Handle = std::unique_ptr<void, Release>;

  explicit PropertyList(Handle root) : root_(std::move(root)) {}

  Handle root_;
};

}  // namespace quorvane
