#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>

#include "orvdiff/formats/XmlLookupBudget.h"
#include "orvdiff/formats/XmlModule.h"
#include "orvdiff/formats/XmlTreeSkipper.h"
#include "orvdiff/platform/VELAssert.h"

// What the XML-validating engines share: the parser, its error handling, and the report of a
// document that fails. For the module's own sources; `XmlModule.h` is for all others.

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
class DOM_ParserImpl : public xercesc::XercesDOMParser, public XmlParser {
 public:
  /// A parser that checks well-formedness and namespaces or, with `Val_Always`, validity against
  /// the grammars loaded before. `handler` must outlive it. Raises `VELAssertError` when the host
  /// has not initialised Xerces, and `VELOutOfMemoryError` when Xerces runs out of memory.
  static std::shared_ptr<DOM_ParserImpl> create(xercesc::ErrorHandler& handler,
                                                ValSchemes validation);
  ~DOM_ParserImpl() override;

  bool isUsable() const override { return m_isUsable; }
  bool passes(const std::string& fileName, const std::function<void()>& parse) override;
  void parseText(const char* bytes, std::uint32_t length) override;
  void loadSchema(const std::string& path, const std::string& namespaceUri) override;

 private:
  DOM_ParserImpl(xercesc::ErrorHandler& handler, ValSchemes validation);

  /// Forgets the last document, whether it passed or failed.
  void resetParser();

  /// Marks the parser as unusable. It is never destroyed then: Xerces may crash in the clean-up.
  void giveUp() { m_isUsable = false; }

  void readSchema(const std::string& path, const std::string& namespaceUri);
  void useSchema(const char* bytes, std::size_t length, const std::string& path,
                 const std::string& namespaceUri);
  void reportUnusableSchema(const std::string& path, const std::string& reason);

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
