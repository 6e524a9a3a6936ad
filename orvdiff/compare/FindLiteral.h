#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

/// Position of the first `literal` in `text` at or after `from`, or npos.
inline std::size_t findLiteral(std::string_view text, std::string_view literal, std::size_t from) {
  if (from >= text.size()) {
    return std::string_view::npos;
  }
  const void* const found =
      memmem(text.data() + from, text.size() - from, literal.data(), literal.size());
  return found == nullptr ? std::string_view::npos
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}
