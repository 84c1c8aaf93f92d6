#include "tests/support/BinaryPropertyList.h"

#include "quorvane/base/Assert.h"

#include <plist/plist.h>

#include <cstdint>

namespace quorvane {

std::string binaryPropertyList(const std::string& xml) {
  plist_t root = nullptr;
  plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &root);
  require(root != nullptr, "a test's property list cannot be read");
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(root, &bytes, &size);
  std::string result(bytes, size);
  plist_to_bin_free(bytes);
  plist_free(root);
  return result;
}

}  // namespace quorvane
