#include "quorvane/app/messages/HarmlessText.h"

#include "quorvane/base/Utf8.h"

#include <fmt/format.h>
#include <utf8proc.h>

#include <iterator>

namespace quorvane {

namespace {

// More accents than this on one letter belong to no script; they would be drawn over the lines above.
constexpr int mostMarksInARow = 4;

utf8proc_category_t categoryOf(char32_t codePoint) {
  return utf8proc_category(static_cast<utf8proc_int32_t>(codePoint));
}

bool isMark(char32_t codePoint) {
  const auto category = categoryOf(codePoint);
  return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_ME;
}

// Letters and marks that Unicode lets a font draw as nothing (Default_Ignorable_Code_Point beyond the format
// characters): blank letters, joiners, variation selectors.
bool isInvisible(char32_t codePoint) {
  return codePoint == 0x034F || codePoint == 0x115F || codePoint == 0x1160 || codePoint == 0x17B4 ||
         codePoint == 0x17B5 || (codePoint >= 0x180B && codePoint <= 0x180F) || codePoint == 0x2800 ||
         codePoint == 0x3164 || codePoint == 0xFFA0 || (codePoint >= 0xFE00 && codePoint <= 0xFE0F) ||
         (codePoint >= 0xE0000 && codePoint <= 0xE0FFF);
}

bool isHarmless(char32_t codePoint) {
  if (codePoint >= 0x20 && codePoint < 0x7F) return true;
  if (isInvisible(codePoint)) return false;
  const auto category = categoryOf(codePoint);
  return category != UTF8PROC_CATEGORY_CN && category != UTF8PROC_CATEGORY_CC && category != UTF8PROC_CATEGORY_CF &&
         category != UTF8PROC_CATEGORY_CS && category != UTF8PROC_CATEGORY_ZL && category != UTF8PROC_CATEGORY_ZP;
}

void spellOut(char32_t codePoint, std::string& out) {
  switch (codePoint) {
    case U'\n': out += "\\n"; return;
    case U'\r': out += "\\r"; return;
    case U'\t': out += "\\t"; return;
    default: break;
  }
  const char* form = codePoint < 0x80 ? "\\x{:02x}" : "\\u{{{:x}}}";
  fmt::format_to(std::back_inserter(out), fmt::runtime(form), static_cast<std::uint32_t>(codePoint));
}

}  // namespace

std::string harmlessText(std::string_view text, CharacterSet characters) {
  std::string out;
  out.reserve(text.size());
  int marks = mostMarksInARow;  // a mark at the beginning would sit on what stands before the text
  while (!text.empty()) {
    const Utf8Step step = readUtf8(text);
    marks = isMark(step.codePoint) ? marks + 1 : 0;
    if (!step.isValid) {
      fmt::format_to(std::back_inserter(out), "\\x{:02x}", static_cast<unsigned char>(text.front()));
    } else if (isHarmless(step.codePoint) && marks <= mostMarksInARow &&
               (characters == CharacterSet::unicode || step.codePoint < 0x80)) {
      out += text.substr(0, step.length);
    } else {
      spellOut(step.codePoint, out);
      marks = isMark(step.codePoint) ? marks : 0;
    }
    text.remove_prefix(step.length);
  }
  return out;
}

}  // namespace quorvane
