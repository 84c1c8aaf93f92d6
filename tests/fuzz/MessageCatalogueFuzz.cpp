// Any catalogue is refused with a reason, or gives a text for each of its keys.
#include "quorvane/app/messages/MessageCatalogue.h"
#include "quorvane/base/Assert.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto catalogue = MessageCatalogue::parsed(text);
  if (!catalogue) return 0;
  for (const auto& [key, raw] : catalogue->texts()) {
    require(catalogue->text(key) == raw, "without values a text is what stands in the catalogue");
    (void)catalogue->text({key, {{"count", std::int64_t{1}}, {"name", std::string(text)}}});
  }
  return 0;
}
