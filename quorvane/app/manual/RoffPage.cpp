#include "quorvane/app/manual/RoffPage.h"

#include "quorvane/app/messages/TextLayout.h"
#include "quorvane/base/Utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t sourceColumns = 78;

std::string roffCharacter(char32_t character) {
  switch (character) {
    case U'\\': return "\\e";
    case U'-': return "\\-";
    case U'\'': return "\\(aq";
    case U'"': return "\\(dq";
    case U'`': return "\\(ga";
    case U'^': return "\\(ha";
    case U'~': return "\\(ti";
    default: break;
  }
  if (character < 0x80) return std::string(1, static_cast<char>(character));
  return fmt::format("\\[u{:04X}]", static_cast<std::uint32_t>(character));
}

// A point or quote at the beginning of a line would make it a request.
std::string guarded(std::string_view line) {
  const bool isRequest = line.starts_with('.') || line.starts_with('\'');
  return isRequest ? "\\&" + std::string(line) : std::string(line);
}

std::string linesOf(std::string_view roff) {
  std::string lines;
  for (const std::string& line : wrapped(roff, sourceColumns)) lines += guarded(line) + "\n";
  return lines;
}

bool isLetter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }

bool isPartOfWord(char c) { return isLetter(c) || c == '-'; }

bool standsForSomething(std::string_view word) {
  return std::ranges::any_of(word, isLetter) &&
         std::ranges::none_of(word, [](char c) { return std::islower(static_cast<unsigned char>(c)) != 0; });
}

}  // namespace

std::string roffLiteral(std::string_view text) {
  std::string roff;
  while (!text.empty()) {
    const Utf8Step step = readUtf8(text);
    roff += roffCharacter(step.codePoint);
    text.remove_prefix(step.length);
  }
  return roff;
}

std::string roffText(std::string_view text) {
  std::string roff;
  bool isBold = false;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find('`', start), text.size());
    roff += roffLiteral(text.substr(start, end - start));
    if (end < text.size()) roff += std::exchange(isBold, !isBold) ? "\\fR" : "\\fB";
    start = end + 1;
  }
  return isBold ? roff + "\\fR" : roff;
}

std::string roffUsage(std::string_view usage) {
  std::string roff;
  while (!usage.empty()) {
    const auto end = std::ranges::find_if_not(usage, isPartOfWord);
    const std::string_view word = usage.substr(0, static_cast<std::size_t>(end - usage.begin()));
    if (word.empty()) {
      roff += roffLiteral(usage.substr(0, 1));
      usage.remove_prefix(1);
      continue;
    }
    roff += fmt::format("\\f{}{}\\fR", standsForSomething(word) ? 'I' : 'B', roffLiteral(word));
    usage.remove_prefix(word.size());
  }
  return roff;
}

RoffPage::RoffPage(const Title& title) {
  std::string name = title.name;
  std::ranges::transform(name, name.begin(),
                         [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
  line(fmt::format(".TH {} 1 {} \"{}\" \"User Commands\"", roffLiteral(name), title.date, roffLiteral(title.source)));
  line(".nh");  // names that are broken at a hyphen could be read as others
  line(".ad l");
}

void RoffPage::section(std::string_view title) {
  line(fmt::format(".SH \"{}\"", roffLiteral(title)));
  isAtSection_ = true;
}

// From what stands before in the section.
void RoffPage::separate() {
  if (!isAtSection_) line(".PP");
}

void RoffPage::paragraph(std::string_view roff) {
  separate();
  text_ += linesOf(roff);
  isAtSection_ = false;
}

void RoffPage::tagged(std::string_view tag, std::string_view roff) {
  line(".TP");
  line(guarded(tag));
  text_ += linesOf(roff);
}

void RoffPage::example(std::string_view text) {
  separate();
  line(".RS 4");
  line(".EX");
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    line(guarded(roffLiteral(text.substr(0, end))));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  line(".EE");
  line(".RE");
}

void RoffPage::line(std::string_view roff) {
  text_ += roff;
  text_ += '\n';
  isAtSection_ = false;
}

}  // namespace quorvane
