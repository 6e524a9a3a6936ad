#pragma once

#include <memory>
#include <string>

#include "orvdiff/compare/OrvTextBuffer.h"
#include "orvdiff/orvdiff_export.h"

namespace orvdiff::host {
class I18NConverter;
}
class PatternProgram;
struct OrvReplacementText;
struct URegularExpression;

/// One regular-expression substitution, applied to every match in a text.
///
/// The expression is ICU's, compiled without flags: case counts, and "." stops at line ends unless
/// the expression itself says "(?s)". Texts are UTF-8; bytes that are not are kept as they are. A
/// pattern holds the state of one search: one thread at a time.
class ORVDIFF_API OrvDiffNormalizationPattern {
 public:
  /// Compiles `pattern`; raises `VELAssertError` when it is no valid expression. `replacement` is
  /// as for `setReplacementText`.
  OrvDiffNormalizationPattern(const char* pattern, const char* replacement);
  virtual ~OrvDiffNormalizationPattern();
  OrvDiffNormalizationPattern(const OrvDiffNormalizationPattern&) = delete;
  OrvDiffNormalizationPattern& operator=(const OrvDiffNormalizationPattern&) = delete;

  /// Sets what matches are replaced by, in ICU's syntax ("$1" is a captured group, "\" quotes the
  /// next character). Null deletes matches.
  void setReplacementText(const char* replacement);

  /// Applies the substitution to the text in `buffer` and leaves the result there as a new array;
  /// an empty text stays as it is. The result must fit into the text's UTF-16 length plus one code
  /// unit; a substitution that lengthens the text further raises `VELAssertError`, as does whatever
  /// else ICU refuses: among that a replacement that names a group which the expression does not
  /// have, and a text on which the search reaches the limit of ICU's stack. (`OrvDiffLib::cleanse`
  /// knows no such limit for expressions that the library can search for itself.) After an error
  /// `buffer` holds what it held before.
  void normalizeText(OrvTextBuffer& buffer) const;

  /// Hands out memory to the text converter: `size` bytes, to be released as `char[]`. Size 0
  /// releases `pBufferToDelete`; a negative size gives null and status -10, no memory null and
  /// status -1. `status` may be null; a block to reallocate is not supported.
  static char* conversionAllocator(void* context, char* pBufferToDelete, int size, int* status);

 private:
  friend class WorkingText;

  struct CloseExpression {
    void operator()(URegularExpression* expression) const;
  };

  /// Whether `WorkingText` may run `m_program` with `m_literalReplacement` instead of ICU: the same
  /// result wherever ICU has one, and no failure is possible.
  bool hasProgram() const;

  std::unique_ptr<URegularExpression, CloseExpression> m_regEx;
  std::unique_ptr<orvdiff::host::I18NConverter> m_converter;
  std::unique_ptr<OrvReplacementText> m_replacementStringObj;
  /// The expression in the form that the library runs itself; null when only ICU can run it.
  std::unique_ptr<PatternProgram> m_program;
  std::string m_literalReplacement;
  bool m_replacementIsLiteral = true;
};
