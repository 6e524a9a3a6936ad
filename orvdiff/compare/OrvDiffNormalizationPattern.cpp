#include "orvdiff/compare/OrvDiffNormalizationPattern.h"

#include <unicode/uregex.h>

#include <algorithm>
#include <string>
#include <utility>

#include "orvdiff/compare/pattern/IcuEdits.h"
#include "orvdiff/compare/pattern/PatternCompiler.h"
#include "orvdiff/compare/pattern/Substitution.h"
#include "orvdiff/compare/pattern/TextCharacters.h"
#include "orvdiff/platform/I18N.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELDowncastSize.h"

namespace {

/// A replacement as ICU takes it. `length` is -1 for a NUL-terminated text, 0 for none.
struct OrvReplacementText {
  std::unique_ptr<char[]> block;  ///< memory of `text`, unless that is static
  const char16_t* text;
  int length;
};

struct CloseExpression {
  void operator()(URegularExpression* expression) const { uregex_close(expression); }
};

struct Utf16Text {
  std::unique_ptr<char[]> block;
  char16_t* text;
  int length;
};

Utf16Text toUtf16(const I18NConverter& converter, const char* text) {
  char16_t* units = nullptr;
  int length = 0;
  converter.toUnicode(&units, &length, text, -1, OrvDiffNormalizationPattern::conversionAllocator,
                      nullptr);
  return {std::unique_ptr<char[]>(reinterpret_cast<char*>(units)), units, length};
}

/// Tells of a failure on a text by the name that a pattern was given, and why. Patterns without a
/// name fail as documented.
void requireSuccess(UErrorCode status, const std::string& name) {
  if (U_FAILURE(status) && !name.empty()) {
    const std::string why =
        status == U_REGEX_TIME_OUT         ? "takes too long on this text"
        : status == U_REGEX_STACK_OVERFLOW ? "needs too much memory on this text"
        : status == U_BUFFER_OVERFLOW_ERROR
            ? "makes the text longer: what it inserts is longer than what it replaces"
            : std::string("cannot be applied to this text: ") + u_errorName(status);
    velRaiseAssertion(("the pattern \"" + name + "\" " + why).c_str(), VEL_HERE);
  }
}

bool isLiteral(const std::string& replacement) {
  return std::all_of(replacement.begin(), replacement.end(),
                     [](char c) { return orvdiff::pattern::isAscii(c) && c != '$' && c != '\\'; });
}

}  // namespace

class OrvDiffNormalizationPattern::Impl {
 public:
  void compile(const char* pattern);
  void setReplacementText(const char* replacement);
  void normalizeText(OrvTextBuffer& buffer) const;
  const orvdiff::pattern::Substitution* substitution() const;
  orvdiff::pattern::Edits findIcuEdits(const char* text, const char* result) const;
  const std::string& getExpression() const { return m_expression; }
  void setStepLimit(int steps);

  std::string name;

 private:
  std::string m_expression;
  std::unique_ptr<URegularExpression, CloseExpression> m_regEx;
  I18NConverter m_converter{"UTF-8"};
  std::unique_ptr<OrvReplacementText> m_replacementStringObj;
  orvdiff::pattern::Substitution m_substitution;  ///< has no program if only ICU can run it
};

void OrvDiffNormalizationPattern::Impl::compile(const char* pattern) {
  UErrorCode status = U_ZERO_ERROR;
  m_regEx.reset(uregex_openC(pattern, 0, nullptr, &status));
  if (status == U_ILLEGAL_ARGUMENT_ERROR && pattern != nullptr && *pattern != '\0') {
    status = U_MEMORY_ALLOCATION_ERROR;  // ICU failed to copy the pattern, and took it for null
  }
  velCheckIcuMemory(status, VEL_HERE);
  VEL_ASSERT_NAMED(m_regEx, "Regular expression compiled");
  velGuardAllocation(VEL_HERE, [&] {
    m_expression = pattern;
    m_substitution.program = orvdiff::pattern::compilePattern(pattern);
    return true;
  });
}

void OrvDiffNormalizationPattern::Impl::setReplacementText(const char* replacement) {
  m_replacementStringObj.reset();
  std::unique_ptr<OrvReplacementText> created(velNew<OrvReplacementText>(VEL_HERE));
  if (replacement != nullptr) {
    Utf16Text converted = toUtf16(m_converter, replacement);
    created->block = std::move(converted.block);
    created->text = converted.text;
    created->length = -1;
  } else {
    created->text = u"";
    created->length = 0;
  }
  m_substitution.replacement = replacement != nullptr ? replacement : "";
  m_replacementStringObj = std::move(created);
}

void OrvDiffNormalizationPattern::Impl::setStepLimit(int steps) {
  UErrorCode status = U_ZERO_ERROR;
  uregex_setTimeLimit(m_regEx.get(), steps, &status);
  VEL_ASSERT_NAMED(U_SUCCESS(status), "Step limit set");
}

/// Text can grow only through a replacement longer than the shortest match, and growth is the one
/// failure of ICU's that the matcher would have to reproduce.
const orvdiff::pattern::Substitution* OrvDiffNormalizationPattern::Impl::substitution() const {
  const auto& [program, replacement] = m_substitution;
  const bool runsWithoutIcu = program != nullptr && isLiteral(replacement) &&
                              replacement.size() <= program->minimumLength();
  return runsWithoutIcu ? &m_substitution : nullptr;
}

void OrvDiffNormalizationPattern::Impl::normalizeText(OrvTextBuffer& buffer) const {
  VEL_ASSERT(m_replacementStringObj);
  VEL_ASSERT(buffer.get());
  if (buffer[0] == '\0') {
    return;
  }
  const Utf16Text input = toUtf16(m_converter, buffer.get());
  UErrorCode status = U_ZERO_ERROR;
  uregex_setText(m_regEx.get(), input.text, -1, &status);
  velCheckIcuMemory(status, VEL_HERE);
  // clang-format off
  VEL_ASSERT_NAMED(U_SUCCESS( status ), "setText failed in normalization");
  // clang-format on
  const std::size_t capacity = static_cast<std::size_t>(input.length) + 2;
  const auto output = velNewArray<char16_t>(VEL_HERE, capacity);
  std::fill_n(output.get(), capacity, u'\0');
  uregex_replaceAll(m_regEx.get(), m_replacementStringObj->text, m_replacementStringObj->length,
                    output.get(),
                    static_cast<int32_t>(
                        VELDowncastSize::uint32(capacity, "OrvDiffNormalizationPattern", __LINE__)),
                    &status);
  if (status == U_STRING_NOT_TERMINATED_WARNING) {
    status = U_BUFFER_OVERFLOW_ERROR;  // no room for the NUL: a warning for ICU, a failure here
  }
  velCheckIcuMemory(status, VEL_HERE);
  requireSuccess(status, name);
  // clang-format off
  VEL_ASSERT_NAMED(U_SUCCESS( status ), "Replacement using regular expression failed.");
  // clang-format on
  char* normalized = nullptr;
  int length = 0;
  m_converter.fromUnicode(&normalized, &length, output.get(), conversionAllocator, nullptr);
  buffer.reset(normalized);
}

orvdiff::pattern::Edits OrvDiffNormalizationPattern::Impl::findIcuEdits(const char* text,
                                                                        const char* result) const {
  const Utf16Text input = toUtf16(m_converter, text);
  const OrvReplacementText& replacement = *m_replacementStringObj;
  return orvdiff::pattern::findIcuEdits({m_regEx.get(),
                                         replacement.text,
                                         {input.text, static_cast<std::size_t>(input.length)},
                                         text,
                                         result});
}

OrvDiffNormalizationPattern::OrvDiffNormalizationPattern(const char* pattern,
                                                         const char* replacement)
    : m_impl(velNew<Impl>(VEL_HERE)) {
  m_impl->compile(pattern);
  m_impl->setReplacementText(replacement);
}

OrvDiffNormalizationPattern::~OrvDiffNormalizationPattern() = default;

const std::string& OrvDiffNormalizationPattern::getExpression() const {
  return m_impl->getExpression();
}

void OrvDiffNormalizationPattern::setName(std::string name) {
  m_impl->name = std::move(name);
}

const std::string& OrvDiffNormalizationPattern::getName() const {
  return m_impl->name;
}

void OrvDiffNormalizationPattern::setStepLimit(int steps) {
  m_impl->setStepLimit(steps);
}

bool OrvDiffNormalizationPattern::isLinear() const {
  return substitution() != nullptr;
}

void OrvDiffNormalizationPattern::setReplacementText(const char* replacement) {
  m_impl->setReplacementText(replacement);
}

orvdiff::pattern::Edits OrvDiffNormalizationPattern::findIcuEdits(const char* text,
                                                                  const char* result) const {
  return m_impl->findIcuEdits(text, result);
}

void OrvDiffNormalizationPattern::normalizeText(OrvTextBuffer& buffer) const {
  m_impl->normalizeText(buffer);
}

const orvdiff::pattern::Substitution* OrvDiffNormalizationPattern::substitution() const {
  return m_impl->substitution();
}

char* OrvDiffNormalizationPattern::conversionAllocator(void* /*context*/, char* pBufferToDelete,
                                                       int size, int* status) {
  const auto report = [status](int code) {
    if (status != nullptr) {
      *status = code;
    }
  };
  report(0);
  if (size < 0) {
    report(-10);
    return nullptr;
  }
  if (size == 0) {
    delete[] pBufferToDelete;
    return nullptr;
  }
  VEL_ASSERT_NAMED(!pBufferToDelete, "Do not support reallocation");
  char* const block = new (std::nothrow) char[static_cast<std::size_t>(size)];
  if (block == nullptr) {
    report(-1);
  }
  return block;
}
