#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Utilities {

/// A text in UTF-16; nothing where the bytes are no well-formed UTF-8.
std::optional<std::u16string> utf16FromUtf8(std::string_view text);

/// A text in UTF-8.
/// @throws std::range_error "bad conversion"  a surrogate without its partner
std::string utf8FromUtf16(std::u16string_view text);

} // namespace Utilities
