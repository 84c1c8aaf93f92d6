#include "quorvane/app/cli/reports/StoragePicture.h"

#include "quorvane/app/cli/terminal/Glyphs.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quorvane {

namespace {

constexpr std::size_t widestBar = 72;

struct Part {
  std::string_view titleKey;
  std::int64_t bytes;
  Tone tone;
  std::string_view Glyphs::*glyph;
};

std::array<Part, 4> partsOf(const StorageSnapshot& storage) {
  const std::int64_t used = std::max<std::int64_t>(0, storage.total - storage.available);
  const std::int64_t other = std::max<std::int64_t>(0, used - storage.applications - storage.userFiles);
  return {Part{"cli.overview.applications", storage.applications, Tone::accent, &Glyphs::applications},
          Part{"cli.overview.userFiles", storage.userFiles, Tone::good, &Glyphs::userFiles},
          Part{"cli.overview.other", other, Tone::plain, &Glyphs::otherUse},
          Part{"cli.overview.available", storage.available, Tone::faint, &Glyphs::available}};
}

std::string cells(const Part& part, std::size_t count, const TextStyle& style) {
  return toned(repeated(glyphs(style.characters).*part.glyph, count), part.tone, style);
}

// Each part ends at its rounded place, so that the bar has the same length whatever the parts are.
std::string bar(const std::array<Part, 4>& parts, std::size_t columns, const TextStyle& style) {
  double total = 0, before = 0;
  for (const Part& part : parts) total += static_cast<double>(part.bytes);
  std::string text;
  std::size_t drawn = 0;
  for (const Part& part : parts) {
    before += static_cast<double>(part.bytes);
    const auto end =
        total > 0 ? static_cast<std::size_t>(std::lround(before / total * static_cast<double>(columns))) : 0;
    text += cells(part, end - drawn, style);
    drawn = end;
  }
  return text;
}

}  // namespace

std::string storagePicture(const StorageSnapshot& storage, const FilePath& home, const ReportStyle& style) {
  const auto parts = partsOf(storage);
  ReportText text(style);
  text.heading(text.say(
      {"cli.overview.title",
       {{"path", home.bytes}, {"available", ByteCount{storage.available}}, {"total", ByteCount{storage.total}}}}));
  if (style.text.isLaidOut)
    text.asIs("\n  " + bar(parts, std::min(style.text.columns - 4, widestBar), style.text) + "\n\n");
  for (const Part& part : parts) {
    const std::string title = style.catalogue.text(part.titleKey);
    if (style.text.isLaidOut) {
      text.asIs("  " + cells(part, 1, style.text) + " " + text.amount(part.bytes) + "  " + title + "\n");
    } else {
      text.row(title, text.amount(part.bytes), 0);
    }
  }
  text.blank();
  text.line({"cli.overview.reserved", {}});
  if (storage.isPartial) text.line({"cli.overview.isPartial", {}});
  text.blank();
  return text.take();
}

}  // namespace quorvane
