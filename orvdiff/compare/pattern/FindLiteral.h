#pragma once

#include <cstddef>
#include <string_view>

namespace orvdiff::pattern {

/// Position of the first `literal` (not empty) in `text` at or after `from`, or npos. Normalising
/// spends most of its time here.
std::size_t findLiteral(std::string_view text, std::string_view literal, std::size_t from);

/// Position of the first byte in `text` at or after `from` that is `one` or `other`, or npos.
std::size_t findEither(std::string_view text, char one, char other, std::size_t from);

}  // namespace orvdiff::pattern
