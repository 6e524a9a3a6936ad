#include "orvdiff/compare/OrvOriginMap.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "orvdiff/compare/LineIndex.h"
#include "orvdiff/compare/MaskComposer.h"
#include "orvdiff/compare/WorkingText.h"
#include "orvdiff/platform/VELAssert.h"

using orvdiff::pattern::Edits;

class OrvOriginMap::Impl {
 public:
  Impl(std::string_view original, const OrvPatternList& patterns);

  std::string_view original() const { return m_original; }
  std::string_view text() const { return {m_buffer.get(), m_length}; }
  Stretch originOf(std::size_t offset) const;
  Position position(std::size_t offset);

  std::vector<Mask> masks;
  std::vector<Rule> rules;
  orvdiff::RuleSets ruleSets;

 private:
  void normalize(const OrvPatternList& patterns);
  void addRule(const OrvDiffNormalizationPattern* pattern, std::size_t matches);

  std::string_view m_original;
  OrvTextBuffer m_buffer;
  std::size_t m_length = 0;
  std::optional<orvdiff::LineIndex> m_lines;  ///< built when first asked for
};

OrvOriginMap::Impl::Impl(std::string_view original, const OrvPatternList& patterns)
    : m_original(original.substr(0, original.find('\0'))),
      m_buffer(velNewArray<char>(VEL_HERE, m_original.size() + 1)) {
  m_original.copy(m_buffer.get(), m_original.size());
  m_buffer[m_original.size()] = '\0';
  normalize(patterns);
  m_length = std::strlen(m_buffer.get());
}

void OrvOriginMap::Impl::normalize(const OrvPatternList& patterns) {
  orvdiff::MaskComposer composer;
  orvdiff::WorkingText text(m_buffer);
  Edits edits;
  text.removeCarriageReturns(&edits);
  composer.add(edits, 0);
  addRule(nullptr, edits.size());
  for (const OrvDiffNormalizationPattern* const pattern : patterns) {
    VEL_ASSERT(pattern);
    edits.clear();
    text.apply(*pattern, &edits);
    composer.add(edits, rules.size());
    addRule(pattern, edits.size());
  }
  masks = composer.takeMasks();
  ruleSets = composer.takeRuleSets();
  for (const Mask& mask : masks) {
    rules[mask.rule].maskedBytes += mask.end - mask.begin;
  }
}

void OrvOriginMap::Impl::addRule(const OrvDiffNormalizationPattern* pattern, std::size_t matches) {
  rules.push_back({pattern, nameOf(pattern), matches, 0});
}

OrvOriginMap::Stretch OrvOriginMap::Impl::originOf(std::size_t offset) const {
  VEL_ASSERT(offset <= m_length);
  if (offset == m_length) {
    return {m_original.size(), m_original.size()};
  }
  const auto next =
      std::upper_bound(masks.begin(), masks.end(), offset,
                       [](std::size_t at, const Mask& mask) { return at < mask.textBegin; });
  if (next == masks.begin()) {
    return {offset, offset + 1};
  }
  const Mask& mask = *std::prev(next);
  if (offset < mask.textEnd) {
    return {mask.begin, mask.end};
  }
  const std::size_t origin = mask.end + (offset - mask.textEnd);
  return {origin, origin + 1};
}

OrvOriginMap::Position OrvOriginMap::Impl::position(std::size_t offset) {
  VEL_ASSERT(offset <= m_original.size());
  if (!m_lines) {
    m_lines.emplace(m_original);
  }
  return {m_lines->lineOf(offset) + 1, m_lines->columnOf(offset) + 1};
}

OrvOriginMap::OrvOriginMap(std::string_view original, const OrvPatternList& patterns)
    : m_impl(velNew<Impl>(VEL_HERE, original, patterns)) {}

OrvOriginMap::~OrvOriginMap() = default;
OrvOriginMap::OrvOriginMap(OrvOriginMap&& other) noexcept = default;
OrvOriginMap& OrvOriginMap::operator=(OrvOriginMap&& other) noexcept = default;

std::string_view OrvOriginMap::original() const {
  return m_impl->original();
}

std::string_view OrvOriginMap::text() const {
  return m_impl->text();
}

OrvOriginMap::Stretch OrvOriginMap::originOf(std::size_t offset) const {
  return m_impl->originOf(offset);
}

const std::vector<OrvOriginMap::Mask>& OrvOriginMap::masks() const {
  return m_impl->masks;
}

std::string_view OrvOriginMap::replacement(const Mask& mask) const {
  return text().substr(mask.textBegin, mask.textEnd - mask.textBegin);
}

const std::vector<OrvOriginMap::Rule>& OrvOriginMap::rules() const {
  return m_impl->rules;
}

const std::vector<std::size_t>& OrvOriginMap::rulesOf(const Mask& mask) const {
  return m_impl->ruleSets[mask.history];
}

std::string OrvOriginMap::nameOf(const OrvDiffNormalizationPattern* pattern) {
  if (pattern == nullptr) {
    return "CarriageReturn";
  }
  if (!pattern->getName().empty()) {
    return pattern->getName();
  }
  const char* const name = OrvDiffNormalizationPatterns::getName(*pattern);
  return name != nullptr ? name : pattern->getExpression();
}

OrvOriginMap::Position OrvOriginMap::position(std::size_t offset) const {
  return m_impl->position(offset);
}
