#pragma once

#include <cstddef>
#include <string_view>

/// Position of the first `literal` (not empty) in `text` at or after `from`, or npos. Nearly all of
/// normalising is this search.
std::size_t findLiteral(std::string_view text, std::string_view literal, std::size_t from);

/// Position of the first byte in `text` at or after `from` that is `one` or `other`, or npos.
std::size_t findEither(std::string_view text, char one, char other, std::size_t from);
