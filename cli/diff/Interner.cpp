#include "cli/diff/Interner.h"

#include <xxhash.h>

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// An open hash table of all tokens seen, at most half full.
class Interner {
 public:
  explicit Interner(std::size_t tokenCount) {
    std::size_t size = 16;
    while (size < 2 * tokenCount) {
      size *= 2;
    }
    m_slots.assign(size, {kNone, 0});
  }

  void number(std::string_view text, const TokenStarts& starts, std::vector<std::uint32_t>& ids) {
    ids.reserve(starts.size());
    for (std::size_t i = 0; i < starts.size(); ++i) {
      const std::size_t end = i + 1 < starts.size() ? starts[i + 1] : text.size();
      ids.push_back(idOf(text.substr(starts[i], end - starts[i])));
    }
  }

 private:
  struct Slot {
    std::uint32_t id;
    std::uint32_t hash;  ///< its upper half: saves most looks at the token
  };

  std::uint32_t idOf(std::string_view token) {
    const std::uint64_t hash = XXH3_64bits(token.data(), token.size());
    const auto upper = static_cast<std::uint32_t>(hash >> 32U);
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t place = hash & mask;; place = (place + 1) & mask) {
      Slot& slot = m_slots[place];
      if (slot.id == kNone) {
        slot = {static_cast<std::uint32_t>(m_tokens.size()), upper};
        m_tokens.push_back(token);
        return slot.id;
      }
      if (slot.hash == upper && m_tokens[slot.id] == token) {
        return slot.id;
      }
    }
  }

  std::vector<Slot> m_slots;
  std::vector<std::string_view> m_tokens;  ///< by id
};

}  // namespace

TokenIds numberTokens(std::string_view a, const TokenStarts& startsA, std::string_view b,
                      const TokenStarts& startsB) {
  TokenIds ids;
  Interner interner(startsA.size() + startsB.size());
  interner.number(a, startsA, ids.a);
  interner.number(b, startsB, ids.b);
  return ids;
}
