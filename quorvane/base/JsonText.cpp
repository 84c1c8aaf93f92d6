#include "quorvane/base/JsonText.h"

#include <algorithm>

namespace quorvane::json {

namespace {

constexpr std::size_t indentation = 2;

/// Whether the text stands in quotes as it is.
bool isPlain(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

void appendQuoted(std::string& out, std::string_view text) { ((out += '"') += text) += '"'; }

}  // namespace

void appendText(std::string& out, std::string_view text) {
  if (isPlain(text)) return appendQuoted(out, text);
  out += Json(withReplacedInvalidUtf8(text)).dump();
}

void appendPath(std::string& out, const FilePath& path) {
  if (isPlain(path.bytes)) return appendQuoted(out, path.bytes);
  out += toJson(path).dump();
}

void appendDocument(std::string& out, const Json& json, std::size_t level) {
  for (const char c : json.dump(indentation)) {
    out += c;
    if (c == '\n') out.append(level * indentation, ' ');
  }
}

Enclosure::Enclosure(std::string& out, std::size_t level, char opening) : out_(out), level_(level) { out_ += opening; }

void Enclosure::next() {
  if (!isEmpty_) out_ += ',';
  isEmpty_ = false;
  breakLine(level_ + 1);
}

void Enclosure::close(char closing) {
  if (!isEmpty_) breakLine(level_);
  out_ += closing;
}

void Enclosure::breakLine(std::size_t level) {
  out_ += '\n';
  out_.append(level * indentation, ' ');
}

}  // namespace quorvane::json
