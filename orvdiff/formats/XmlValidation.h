#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>

#include "orvdiff/formats/XmlLookupBudget.h"
#include "orvdiff/formats/XmlTreeSkipper.h"

class OrvDiffResult;

/// What the engines that validate XML share: the parser, how its complaints are taken, and how a
/// document that fails is reported.

/// Ends a parse at the first error by throwing it. Warnings are ignored, and so is a fatal error
/// that tells of malformed UTF data: such a text is left to the comparison. Stateless.
class XmlErrorHandler : public xercesc::ErrorHandler {
 public:
  ~XmlErrorHandler() override;
  void warning(const xercesc::SAXParseException& problem) override;
  void error(const xercesc::SAXParseException& problem) override;
  void fatalError(const xercesc::SAXParseException& problem) override;
  void resetErrors() override;
};

namespace orvdiff::detail {

/// The parser of one engine, used for one document after the other. It builds no tree, since no one
/// would look at it, but finds the faults of one that does, in the same places.
///
/// It keeps grammars, and so refuses a document with an internal DTD subset: no document declares
/// entities or default attributes. Nothing that a document names outside itself is ever read, from
/// disk or network: an external DTD counts as empty, and hints at schemas are ignored. A schema
/// that the engine loads may include and import local files.
class DOM_ParserImpl : public xercesc::XercesDOMParser {
 public:
  /// A parser that checks well-formedness and namespaces, or, with `Val_Always`, validity against
  /// the grammars loaded before. `handler` must outlive it. Raises `VELAssertError` when the host
  /// has not initialised Xerces, and `VELOutOfMemoryError` when Xerces runs out of memory.
  static std::shared_ptr<DOM_ParserImpl> create(xercesc::ErrorHandler& handler,
                                                ValSchemes validation);
  ~DOM_ParserImpl() override;

  /// A new parser of the same kind, without the grammars. Raises what `create` does.
  std::shared_ptr<DOM_ParserImpl> createAnother() const;

  /// Parses a text, which stays the caller's. Throws what Xerces throws, and is then to be reset.
  void parseText(const char* bytes, std::uint32_t length);

  /// Forgets the last document, whether it was parsed or failed.
  void resetParser();

  /// The parser was left in the middle of its work, by an allocation that failed for example. It
  /// can only be replaced, and is never destroyed: Xerces may crash when it cleans up then.
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

/// `message`, the NUL-terminated text of a Xerces exception, as it is printed.
std::string narrowXmlText(const XMLCh* message);

/// Prints a line about a failure on standard output, and flushes it, so that it stays in place
/// among what the host and its scripts print.
void printXmlFailure(const std::string& line);

/// Hands the text of a document to `parse`: `inMemoryText`, or, when that is null, the whole file.
/// Null when `parse` returns; else a new result: the file as missing, or a plain failure, both
/// names being `fileName`. What Xerces threw is printed on standard output, and `parser`, with
/// which `parse` works, is reset. Other exceptions make a failure without a word, and the next call
/// replaces the parser, which raises what `DOM_ParserImpl::create` does.
OrvDiffResult* findXmlFault(
    std::shared_ptr<DOM_ParserImpl>& parser, const std::string& fileName, const char* inMemoryText,
    const std::function<void(const char* bytes, std::uint64_t length)>& parse);
