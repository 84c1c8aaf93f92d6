#include "quorvane/app/messages/TextLayout.h"

#include "quorvane/base/Utf8.h"

#include <utf8proc.h>

#include <algorithm>

namespace quorvane {

namespace {

// The library gives no room to vowel signs that stand beside their letter, and some to the second and third part of a
// Korean syllable; terminals do the opposite.
std::size_t widthOf(char32_t codePoint) {
  const auto number = static_cast<utf8proc_int32_t>(codePoint);
  if ((codePoint >= 0x1160 && codePoint <= 0x11FF) || (codePoint >= 0xD7B0 && codePoint <= 0xD7FB)) return 0;
  if (utf8proc_category(number) == UTF8PROC_CATEGORY_MC) return 1;
  return static_cast<std::size_t>(std::max(0, utf8proc_charwidth(number)));
}

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

std::size_t hexDigitsAt(std::string_view text, std::size_t start) {
  std::size_t end = start;
  while (end < text.size() && isHexDigit(text[end])) ++end;
  return end - start;
}

// The length of a character that is spelled out at the beginning of harmless text, as "\x1b"; 0 without one.
std::size_t spelledLength(std::string_view text) {
  if (text.size() < 2 || text[0] != '\\') return 0;
  if (text[1] == 'n' || text[1] == 'r' || text[1] == 't') return 2;
  if (text[1] == 'x' && hexDigitsAt(text.substr(0, 4), 2) == 2) return 4;
  if (!text.starts_with("\\u{")) return 0;
  const std::size_t end = 3 + hexDigitsAt(text, 3);
  return end > 3 && end <= 9 && end < text.size() && text[end] == '}' ? end + 1 : 0;
}

// A letter with the marks on it, or a character that is spelled out: what may not be torn apart.
struct Cluster {
  std::size_t length = 0;
  std::size_t width = 0;
};

Cluster firstCluster(std::string_view text) {
  Cluster cluster;
  cluster.length = cluster.width = spelledLength(text);
  while (cluster.length < text.size()) {
    const Utf8Step step = readUtf8(text.substr(cluster.length));
    const std::size_t width = widthOf(step.codePoint);
    if (cluster.length > 0 && width > 0) break;
    cluster.length += step.length;
    cluster.width += width;
  }
  return cluster;
}

std::vector<Cluster> clustersOf(std::string_view text) {
  std::vector<Cluster> clusters;
  while (!text.empty()) {
    clusters.push_back(firstCluster(text));
    text.remove_prefix(clusters.back().length);
  }
  return clusters;
}

// As many clusters at the beginning of a text as fit into at least two columns. Only a character that is spelled out
// can be wider than that; where it alone does not fit it is torn apart.
Cluster beginningWithin(std::string_view text, std::size_t columns) {
  Cluster beginning;
  if (spelledLength(text) > columns) return {columns, columns};
  while (beginning.length < text.size()) {
    const Cluster next = firstCluster(text.substr(beginning.length));
    if (beginning.width + next.width > columns) break;
    beginning.length += next.length;
    beginning.width += next.width;
  }
  return beginning;
}

// The bytes of as many of these clusters as fit.
template <class Clusters>
std::size_t lengthWithin(const Clusters& clusters, std::size_t columns) {
  std::size_t length = 0;
  for (const Cluster& cluster : clusters) {
    if (cluster.width > columns) break;
    columns -= cluster.width;
    length += cluster.length;
  }
  return length;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const Utf8Step step = readUtf8(text);
    width += widthOf(step.codePoint);
    text.remove_prefix(step.length);
  }
  return width;
}

std::string paddedRight(std::string_view text, std::size_t columns) {
  const std::size_t width = displayWidth(text);
  return std::string(text) + std::string(columns > width ? columns - width : 0, ' ');
}

std::string paddedLeft(std::string_view text, std::size_t columns) {
  const std::size_t width = displayWidth(text);
  return std::string(columns > width ? columns - width : 0, ' ') + std::string(text);
}

std::string shortened(std::string_view text, std::size_t columns, std::string_view ellipsis) {
  if (displayWidth(text) <= columns) return std::string(text);
  auto clusters = clustersOf(text);
  const std::size_t gap = displayWidth(ellipsis);
  if (columns <= gap) return std::string(text.substr(0, lengthWithin(clusters, columns)));
  const std::size_t room = columns - gap;
  const std::size_t head = lengthWithin(clusters, (room + 1) / 2);
  std::ranges::reverse(clusters);
  const std::size_t tail = lengthWithin(clusters, room - displayWidth(text.substr(0, head)));
  return std::string(text.substr(0, head)) + std::string(ellipsis) + std::string(text.substr(text.size() - tail));
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns) {
  columns = std::max<std::size_t>(columns, 2);
  std::vector<std::string> lines(1);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (word.empty()) continue;
    std::size_t width = displayWidth(word);
    if (!lines.back().empty() && displayWidth(lines.back()) + 1 + width > columns) lines.emplace_back();
    if (!lines.back().empty()) lines.back() += ' ';
    while (width > columns) {
      const Cluster part = beginningWithin(word, columns);
      lines.back() += word.substr(0, part.length);
      lines.emplace_back();
      word.remove_prefix(part.length);
      width -= part.width;
    }
    lines.back() += word;
  }
  if (lines.size() > 1 && lines.back().empty()) lines.pop_back();
  return lines;
}

}  // namespace quorvane
