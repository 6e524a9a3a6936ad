#pragma once

#include <string>
#include <string_view>

/// Bytes in base64, with padding.
std::string base64(std::string_view bytes);

/// A text compressed as browsers unpack it ("deflate": zlib's format), in base64. Raises
/// `std::bad_alloc`.
std::string packed(std::string_view text);
