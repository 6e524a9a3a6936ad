#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>

#include "orvdiff/formats/XmlLookupBudget.h"
#include "orvdiff/formats/XmlTreeSkipper.h"
#include "orvdiff/platform/VELAssert.h"

class OrvDiffResult;

// What the XML-validating engines share: the parser, its error handling, and the report of a
// document that fails.

/// Ends a parse at the first error by throwing it. Ignores warnings, and fatal errors about
/// malformed UTF data: the comparison judges such a text. Stateless.
class XmlErrorHandler : public xercesc::ErrorHandler {
 public:
  ~XmlErrorHandler() override;
  void warning(const xercesc::SAXParseException& problem) override;
  void error(const xercesc::SAXParseException& problem) override;
  void fatalError(const xercesc::SAXParseException& problem) override;
  void resetErrors() override;
};

namespace orvdiff::detail {

/// The parser of one engine, reused for every document. It builds no tree, because nobody would
/// read it, but reports the same errors in the same places as a parser that does.
///
/// It caches grammars, and therefore rejects a document with an internal DTD subset: no document
/// can declare entities or default attributes. It never reads anything that a document refers to,
/// from disk or network: an external DTD counts as empty, and schema hints are ignored. A schema
/// that the engine loads may include and import local files.
class DOM_ParserImpl : public xercesc::XercesDOMParser {
 public:
  /// A parser that checks well-formedness and namespaces or, with `Val_Always`, validity against
  /// the grammars loaded before. `handler` must outlive it. Raises `VELAssertError` when the host
  /// has not initialised Xerces, and `VELOutOfMemoryError` when Xerces runs out of memory.
  static std::shared_ptr<DOM_ParserImpl> create(xercesc::ErrorHandler& handler,
                                                ValSchemes validation);
  ~DOM_ParserImpl() override;

  /// A new parser of the same kind, without the grammars. Raises what `create` raises.
  std::shared_ptr<DOM_ParserImpl> createAnother() const;

  /// Parses a text, which stays the caller's. Throws what Xerces throws; reset the parser then.
  void parseText(const char* bytes, std::uint32_t length);

  /// Forgets the last document, whether it passed or failed.
  void resetParser();

  /// Marks a parser that was interrupted in the middle of its work, by a failed allocation for
  /// example. All that remains is to replace it. It is never destroyed: Xerces may crash in the
  /// clean-up.
  void giveUp() { m_isUsable = false; }
  bool isUsable() const { return m_isUsable; }

 private:
  DOM_ParserImpl(xercesc::ErrorHandler& handler, ValSchemes validation);

  xercesc::ErrorHandler& m_handler;
  const ValSchemes m_validation;
  bool m_isUsable = true;
  XmlLookupBudget m_lookupBudget;
  XmlTreeSkipper m_treeSkipper;
};

}  // namespace orvdiff::detail

using orvdiff::detail::DOM_ParserImpl;

/// Runs `action`, and raises `VELOutOfMemoryError` when it runs out of memory, which Xerces reports
/// by an exception of its own that is no `std::exception`.
void guardXmlMemory(const VELPlace& place, const std::function<void()>& action);

/// `message`, the NUL-terminated text of a Xerces exception, converted for printing. Raises
/// `VELOutOfMemoryError`.
std::string narrowXmlText(const XMLCh* message);

/// Prints a line about a failure on standard output and flushes it, so that it keeps its place
/// among the output of the host and its scripts.
void printXmlFailure(const std::string& line);

/// Passes the text of a document to `parse`: `inMemoryText` or, when that is null, the whole file.
/// Returns null when `parse` succeeds, else a new result: the file as missing, or a plain failure,
/// with `fileName` for both names. Prints what Xerces threw on standard output, and resets
/// `parser`, which `parse` must use. `VELOutOfMemoryError` and `VELStdExceptionError` out of
/// `parse` are passed on; any other exception, `std::bad_alloc` included, is a failure without a
/// word. After either the next call replaces the parser, and raises what `DOM_ParserImpl::create`
/// raises.
OrvDiffResult* findXmlFault(
    std::shared_ptr<DOM_ParserImpl>& parser, const std::string& fileName, const char* inMemoryText,
    const std::function<void(const char* bytes, std::uint64_t length)>& parse);
