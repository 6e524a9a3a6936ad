#include "orvdiff/compare/pattern/FindLiteral.h"

#include <array>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace orvdiff::pattern {
namespace {

/// The C library's search. It builds tables on every call, which does not pay for literals that
/// occur every few hundred bytes.
std::size_t findWithMemmem(std::string_view text, std::string_view literal, std::size_t from) {
  const void* const found =
      memmem(text.data() + from, text.size() - from, literal.data(), literal.size());
  return found == nullptr ? std::string_view::npos
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

#if defined(__SSE2__)
constexpr std::size_t kWidth = sizeof(__m128i);
constexpr std::size_t kStride = 4 * kWidth;  // a cache line
constexpr std::size_t kAhead = std::size_t{4}
                               << 10;  // the hardware prefetcher stops at the end of a page

__m128i load(std::string_view text, std::size_t position) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + position));
}

std::uint64_t maskOf(__m128i fits) {
  return static_cast<std::uint64_t>(_mm_movemask_epi8(fits));
}

std::size_t lowestBit(std::uint64_t mask) {
  return static_cast<std::size_t>(__builtin_ctzll(mask));
}

/// A bit for each of the `kStride` positions from `position` on: whether `fits` holds there. `fits`
/// tests `kWidth` positions at a time.
template <typename Fits>
std::uint64_t matchMask(Fits fits, std::size_t position) {
  const __m128i first = fits(position);
  const __m128i second = fits(position + kWidth);
  const __m128i third = fits(position + 2 * kWidth);
  const __m128i fourth = fits(position + 3 * kWidth);
  if (maskOf(_mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, fourth))) == 0) {
    return 0;
  }
  return maskOf(first) | maskOf(second) << kWidth | maskOf(third) << (2 * kWidth) |
         maskOf(fourth) << (3 * kWidth);
}
#endif

}  // namespace

std::size_t findLiteral(std::string_view text, std::string_view literal, std::size_t from) {
  if (from >= text.size() || text.size() - from < literal.size()) {
    return std::string_view::npos;
  }
#if defined(__SSE2__)
  // Test many positions at a time; compare the whole literal only where its first and its last byte
  // both fit.
  const std::size_t lastOffset = literal.size() - 1;
  const __m128i first = _mm_set1_epi8(literal.front());
  const __m128i last = _mm_set1_epi8(literal.back());
  const auto bothFit = [&](std::size_t position) {
    return _mm_and_si128(_mm_cmpeq_epi8(first, load(text, position)),
                         _mm_cmpeq_epi8(last, load(text, position + lastOffset)));
  };
  for (; from + lastOffset + kStride <= text.size(); from += kStride) {
    _mm_prefetch(text.data() + from + kAhead, _MM_HINT_T0);
    for (std::uint64_t mask = matchMask(bothFit, from); mask != 0; mask &= mask - 1) {
      const std::size_t candidate = from + lowestBit(mask);
      if (std::memcmp(text.data() + candidate, literal.data(), literal.size()) == 0) {
        return candidate;
      }
    }
  }
#endif
  return findWithMemmem(text, literal, from);
}

std::size_t findEither(std::string_view text, char one, char other, std::size_t from) {
#if defined(__SSE2__)
  const __m128i first = _mm_set1_epi8(one);
  const __m128i second = _mm_set1_epi8(other);
  const auto oneFits = [&](std::size_t position) {
    const __m128i bytes = load(text, position);
    return _mm_or_si128(_mm_cmpeq_epi8(first, bytes), _mm_cmpeq_epi8(second, bytes));
  };
  for (; from + kStride <= text.size(); from += kStride) {
    _mm_prefetch(text.data() + from + kAhead, _MM_HINT_T0);
    const std::uint64_t mask = matchMask(oneFits, from);
    if (mask != 0) {
      return from + lowestBit(mask);
    }
  }
#endif
  const std::array<char, 2> either = {one, other};
  return text.find_first_of(std::string_view(either.data(), either.size()), from);
}

}  // namespace orvdiff::pattern
