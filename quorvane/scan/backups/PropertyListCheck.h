#pragma once

#include <cstddef>
#include <string_view>

namespace quorvane {

/// How deeply the values of a property list may be nested.
constexpr std::size_t deepestPropertyList = 512;

/// Whether a binary property list can be given to the parser: its values form no circle, are nested at most
/// `deepestPropertyList` deep, and take at most some tens of MiB once every reference is a copy. The parser itself
/// copies what is referred to twice, and recurses for each level.
bool isHarmlessBinaryPropertyList(std::string_view bytes);

/// The same for the XML form. Also refuses what the parser would misread or be slow over: a date of another form than
/// "2026-11-21T05:04:03Z", attributes, a NUL, or very many entities in one text.
bool isHarmlessXmlPropertyList(std::string_view text);

}  // namespace quorvane
