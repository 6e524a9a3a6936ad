#pragma once

#include <memory>
#include <string>
#include <vector>

#include "orvdiff/compare/OrvTextBuffer.h"
#include "orvdiff/orvdiff_export.h"

namespace orvdiff {
class WorkingText;
namespace pattern {
struct Edit;
struct Substitution;
}  // namespace pattern
}  // namespace orvdiff

/// One regular-expression substitution, applied to every match in a text.
///
/// The expression has ICU's syntax, compiled without flags: it is case-sensitive, and "." stops at
/// line ends unless the expression itself says "(?s)". Texts are UTF-8; bytes that are not valid
/// UTF-8 are kept. A pattern holds the state of a search: use it from one thread at a time.
class ORVDIFF_API OrvDiffNormalizationPattern {
 public:
  /// Compiles `pattern`; raises `VELAssertError` if it is not a valid expression. `replacement` is
  /// as for `setReplacementText`.
  OrvDiffNormalizationPattern(const char* pattern, const char* replacement);
  virtual ~OrvDiffNormalizationPattern();
  OrvDiffNormalizationPattern(const OrvDiffNormalizationPattern&) = delete;
  OrvDiffNormalizationPattern& operator=(const OrvDiffNormalizationPattern&) = delete;

  /// Sets what replaces a match, in ICU's syntax ("$1" inserts a captured group, "\" quotes the
  /// next character). Null deletes matches.
  void setReplacementText(const char* replacement);

  /// Applies the substitution to the text in `buffer` and puts the result there as a new array; an
  /// empty text stays as it is. Raises `VELAssertError`, leaving `buffer` unchanged, if the result
  /// is more than one UTF-16 code unit longer than the text, or if ICU fails: for example because
  /// the replacement names a group that the expression does not have, or because the search reaches
  /// the limit of ICU's stack. (`OrvDiffLib::cleanse` has no such limit for the expressions that
  /// the library can search for by itself.)
  void normalizeText(OrvTextBuffer& buffer) const;

  /// The expression, as it was given to the constructor.
  const std::string& getExpression() const;

  /// Names the pattern for those who explain results (`OrvOriginMap::nameOf`). Changes no text.
  void setName(std::string name);

  /// The name that was set; empty if none was.
  const std::string& getName() const;

  /// Bounds the work for one text, for an expression that nobody has vetted: one step is ten
  /// thousand of ICU's, about 0.1 ms. Beyond it applying the pattern raises `VELAssertError`, as on
  /// any failure of ICU's. The same text always takes the same steps. 0, the default: no bound.
  /// Patterns that run in linear time are not bounded.
  void setStepLimit(int steps);

  /// Whether the library runs the pattern itself, in time linear in the text and without any way to
  /// fail. Otherwise ICU runs it, whose time may grow faster than the text.
  bool isLinear() const;

  /// Allocates memory for the text converter: `size` bytes, to be released as `char[]`. Size 0
  /// releases `pBufferToDelete`. A negative size gives null and status -10, lack of memory null and
  /// status -1. Reallocating a block is not supported.
  static char* conversionAllocator(void* context, char* pBufferToDelete, int size, int* status);

 private:
  friend class orvdiff::WorkingText;

  class Impl;

  /// The pattern in the form that runs without ICU and cannot fail: wherever ICU has a result, this
  /// has the same. Null if only ICU can run the pattern.
  const orvdiff::pattern::Substitution* substitution() const;

  /// What `normalizeText` changed when it made `result` of `text`.
  std::vector<orvdiff::pattern::Edit> findIcuEdits(const char* text, const char* result) const;

  std::unique_ptr<Impl> m_impl;
};
