#include "orvdiff/compare/OrvDiffNormalizationPattern.h"

#include <unicode/uregex.h>

#include <algorithm>
#include <cstring>

#include "orvdiff/compare/pattern/PatternProgram.h"
#include "orvdiff/compare/pattern/TextCharacters.h"
#include "orvdiff/platform/I18N.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELDowncastSize.h"

/// A replacement as ICU wants it. `length` is -1 for a NUL-terminated text, 0 for none.
struct OrvReplacementText {
  std::unique_ptr<char[]> block;  ///< memory behind `text`, unless that is static
  const char16_t* text;
  int length;
};

namespace {

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

bool isLiteral(const char* replacement) {
  return std::all_of(replacement, replacement + std::strlen(replacement),
                     [](char c) { return isAscii(c) && c != '$' && c != '\\'; });
}

}  // namespace

void OrvDiffNormalizationPattern::CloseExpression::operator()(
    URegularExpression* expression) const {
  uregex_close(expression);
}

OrvDiffNormalizationPattern::OrvDiffNormalizationPattern(const char* pattern,
                                                         const char* replacement)
    : m_converter(std::make_unique<I18NConverter>("UTF-8")) {
  UErrorCode status = U_ZERO_ERROR;
  m_regEx.reset(uregex_openC(pattern, 0, nullptr, &status));
  if (status == U_ILLEGAL_ARGUMENT_ERROR && pattern != nullptr && *pattern != '\0') {
    status = U_MEMORY_ALLOCATION_ERROR;  // ICU had none to copy the pattern, and read it as null
  }
  velCheckIcuMemory(status, VEL_HERE);
  VEL_ASSERT_NAMED(m_regEx, "Regular expression compiled");
  velGuardAllocation(VEL_HERE, [&] {
    m_program = PatternProgram::compile(pattern);
    return true;
  });
  setReplacementText(replacement);
}

OrvDiffNormalizationPattern::~OrvDiffNormalizationPattern() = default;

void OrvDiffNormalizationPattern::setReplacementText(const char* replacement) {
  m_replacementStringObj.reset();
  std::unique_ptr<OrvReplacementText> created(velNew<OrvReplacementText>(VEL_HERE));
  if (replacement != nullptr) {
    Utf16Text converted = toUtf16(*m_converter, replacement);
    created->block = std::move(converted.block);
    created->text = converted.text;
    created->length = -1;
  } else {
    created->text = u"";
    created->length = 0;
  }
  m_literalReplacement = replacement != nullptr ? replacement : "";
  m_replacementIsLiteral = isLiteral(m_literalReplacement.c_str());
  m_replacementStringObj = std::move(created);
}

bool OrvDiffNormalizationPattern::hasProgram() const {
  // A replacement no longer than the shortest match can never lengthen the text, and lengthening is
  // the one failure that a program would have to foresee.
  return m_program != nullptr && m_replacementIsLiteral &&
         m_literalReplacement.size() <= m_program->minimumLength();
}

void OrvDiffNormalizationPattern::normalizeText(OrvTextBuffer& buffer) const {
  VEL_ASSERT(m_replacementStringObj);
  VEL_ASSERT(buffer.get());
  if (buffer[0] == '\0') {
    return;
  }
  const Utf16Text input = toUtf16(*m_converter, buffer.get());
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
    status = U_BUFFER_OVERFLOW_ERROR;  // no room for the NUL: for ICU a warning, here a failure
  }
  velCheckIcuMemory(status, VEL_HERE);
  // clang-format off
  VEL_ASSERT_NAMED(U_SUCCESS( status ), "Replacement using regular expression failed.");
  // clang-format on
  char* normalized = nullptr;
  int length = 0;
  m_converter->fromUnicode(&normalized, &length, output.get(), conversionAllocator, nullptr);
  buffer.reset(normalized);
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
