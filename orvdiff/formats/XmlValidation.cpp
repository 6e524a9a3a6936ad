#include "orvdiff/formats/XmlValidation.h"

#include <algorithm>
#include <initializer_list>
#include <iostream>
#include <new>
#include <stdexcept>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/validators/common/Grammar.hpp>

#include "orvdiff/platform/I18N.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELFmFile.h"

namespace {

constexpr const char* kSeparator = "+++++++++++++++++++++++++++++++++++++++++++++++++++++++++";
constexpr const char* kMalformedUtf = "Type:UTFDataFormatException";

/// System identifier of the empty entity. The parser files the grammar of an external DTD under it,
/// so no document or namespace may have this name; "" would be the absence of a namespace.
constexpr const char* kNothing = "orvdiff:nothing";

/// Keeps the parser from reading anything that a document points to.
class ClosedWorldResolver : public xercesc::XMLEntityResolver {
 public:
  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override {
    switch (resource->getResourceIdentifierType()) {
      case xercesc::XMLResourceIdentifier::SchemaGrammar:
        return nullptr;  // a hint in the document; the parser does without
      case xercesc::XMLResourceIdentifier::SchemaInclude:
      case xercesc::XMLResourceIdentifier::SchemaImport:
      case xercesc::XMLResourceIdentifier::SchemaRedefine:
        return openBesideSchema(*resource);
      default:
        return new xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(""), 0, kNothing);
    }
  }

 private:
  /// Only schemas include and import, and only engines load schemas, so this serves no document.
  static xercesc::InputSource* openBesideSchema(const xercesc::XMLResourceIdentifier& resource) {
    const std::string location = narrowXmlText(resource.getSystemId());
    if (location.empty() || location.find("://") != std::string::npos) {
      return nullptr;
    }
    return new xercesc::LocalFileInputSource(resource.getBaseURI(), resource.getSystemId());
  }
};

ClosedWorldResolver s_closedWorldResolver;

/// Prints a line about a failure on standard output and flushes it, so that it keeps its place
/// among the output of the host and its scripts.
void printXmlFailure(const std::string& line) {
  std::cout << line << std::endl;
}

/// Prints a failure block; `position` holds the lines before its closing separator.
void printBlock(const std::string& kind, const std::string& fileName, const XMLCh* message,
                std::initializer_list<std::string> position) {
  printXmlFailure(kSeparator);
  printXmlFailure(kind + " error for file: " + fileName);
  printXmlFailure(kind + " error message: " + narrowXmlText(message));
  std::for_each(position.begin(), position.end(), printXmlFailure);
  printXmlFailure(kSeparator);
}

/// Runs `parse` and prints what Xerces throws. True when it threw nothing.
bool passesParse(const std::string& fileName, const std::function<void()>& parse) {
  try {
    parse();
    return true;
  } catch (const xercesc::XMLException& exception) {
    printBlock("XML Exception", fileName, exception.getMessage(), {});
  } catch (const xercesc::SAXParseException& exception) {
    const auto line = static_cast<std::int64_t>(exception.getLineNumber());
    const auto column = static_cast<std::int64_t>(exception.getColumnNumber());
    printBlock("Schema validation", fileName, exception.getMessage(),
               {"Schema validation error at line " + std::to_string(line),
                "Schema validation error at column number " + std::to_string(column)});
  } catch (const xercesc::DOMException& exception) {
    printBlock("DOM Exception", fileName, exception.getMessage(), {});
  }
  return false;
}

/// A document in memory that reports to a budget every piece the parser reads.
class WatchedText : public xercesc::MemBufInputSource {
 public:
  WatchedText(const XMLByte* bytes, XMLSize_t length, XmlLookupBudget& budget)
      : MemBufInputSource(bytes, length, ""), m_bytes(bytes), m_length(length), m_budget(budget) {}

  xercesc::BinInputStream* makeStream() const override {
    return new (getMemoryManager()) Stream(*this);
  }

 private:
  class Stream : public xercesc::BinMemInputStream {
   public:
    explicit Stream(const WatchedText& text)
        : BinMemInputStream(text.m_bytes, text.m_length, BufOpt_Reference, text.getMemoryManager()),
          m_budget(text.m_budget) {}

    XMLSize_t readBytes(XMLByte* toFill, XMLSize_t most) override {
      const XMLSize_t count = BinMemInputStream::readBytes(toFill, most);
      m_budget.noteInput(toFill, count);
      return count;
    }

   private:
    XmlLookupBudget& m_budget;
  };

  const XMLByte* m_bytes;
  XMLSize_t m_length;
  XmlLookupBudget& m_budget;
};

}  // namespace

XmlErrorHandler::~XmlErrorHandler() = default;

void XmlErrorHandler::warning(const xercesc::SAXParseException&) {}

void XmlErrorHandler::error(const xercesc::SAXParseException& problem) {
  throw xercesc::SAXParseException(problem);
}

void XmlErrorHandler::fatalError(const xercesc::SAXParseException& problem) {
  if (narrowXmlText(problem.getMessage()).find(kMalformedUtf) == std::string::npos) {
    throw xercesc::SAXParseException(problem);
  }
}

void XmlErrorHandler::resetErrors() {}

std::shared_ptr<DOM_ParserImpl> DOM_ParserImpl::create(xercesc::ErrorHandler& handler,
                                                       ValSchemes validation) {
  // Checked first, because even the parser's own memory comes from Xerces.
  const bool isXercesInitialized = xercesc::XMLPlatformUtils::fgMemoryManager != nullptr;
  VEL_ASSERT_NAMED(isXercesInitialized,
                   "Call XMLPlatformUtils::Initialize before validating XML");
  const auto destroy = [](DOM_ParserImpl* parser) {
    if (parser->isUsable()) {
      delete parser;
    }
  };
  return velGuardAllocation(VEL_HERE, [&handler, validation, destroy] {
    std::shared_ptr<DOM_ParserImpl> created;
    guardXmlMemory(VEL_HERE, [&] {
      try {
        created = {new DOM_ParserImpl(handler, validation), destroy};
      } catch (const xercesc::XMLException& exception) {
        throw std::runtime_error(narrowXmlText(exception.getMessage()));
      }
    });
    return created;
  });
}

DOM_ParserImpl::DOM_ParserImpl(xercesc::ErrorHandler& handler, ValSchemes validation)
    : m_lookupBudget(*getScanner()->getLocator()),
      m_treeSkipper(*this, *getScanner(), m_lookupBudget) {
  cacheGrammarFromParse(true);
  useCachedGrammarInParse(true);
  setDoNamespaces(true);
  setIncludeIgnorableWhitespace(false);
  setValidationScheme(validation);
  setErrorHandler(&handler);
  setDoSchema(validation != Val_Never);
  setLoadExternalDTD(false);
  setXMLEntityResolver(&s_closedWorldResolver);
  setDisableDefaultEntityResolution(true);
  getScanner()->setDocHandler(&m_treeSkipper);
}

DOM_ParserImpl::~DOM_ParserImpl() = default;

/// The two errors that are passed on come from outside the parse: from narrowing a message and from
/// loading a schema. The machine failed there, and the document is not to blame. A parse that runs
/// out of memory throws other types; like any unknown exception it fails the document.
bool DOM_ParserImpl::passes(const std::string& fileName, const std::function<void()>& parse) {
  try {
    const bool result = passesParse(fileName, parse);
    resetParser();
    return result;
  } catch (const VELOutOfMemoryError&) {
    giveUp();
    throw;
  } catch (const VELStdExceptionError&) {
    giveUp();
    throw;
  } catch (...) {
    giveUp();
    return false;
  }
}

void DOM_ParserImpl::parseText(const char* bytes, std::uint32_t length) {
  const auto* const text = reinterpret_cast<const XMLByte*>(bytes);
  m_lookupBudget.startDocument(text, length);
  parse(WatchedText(text, length, m_lookupBudget));
}

void DOM_ParserImpl::loadSchema(const std::string& path, const std::string& namespaceUri) {
  if (getExternalSchemaLocation() == nullptr) {
    guardXmlMemory(VEL_HERE, [&] { readSchema(path, namespaceUri); });
  }
}

void DOM_ParserImpl::readSchema(const std::string& path, const std::string& namespaceUri) {
  VELFmFile file;
  if (file.open(path.c_str(), VELFmFile::eOpenExisting, 1) == 0) {
    reportUnusableSchema(path, "the file cannot be opened");
    return;  // without a grammar, the document's first element is an error
  }
  const auto text = velNewArray<char>(VEL_HERE, file.getLength());
  const std::size_t length = file.read(text.get(), file.getLength());
  if (file.hasFailed()) {
    reportUnusableSchema(path, "the file cannot be read to its end");
    return;
  }
  useSchema(text.get(), length, path, namespaceUri);
}

void DOM_ParserImpl::useSchema(const char* bytes, std::size_t length, const std::string& path,
                               const std::string& namespaceUri) {
  const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes), length,
                                          path.c_str(), false);
  const xercesc::Grammar* grammar = nullptr;
  try {
    grammar = loadGrammar(source, xercesc::Grammar::SchemaGrammarType, true);
  } catch (const xercesc::SAXParseException& exception) {
    reportUnusableSchema(path, narrowXmlText(exception.getMessage()));
    throw;
  }
  const std::string described =
      grammar != nullptr ? narrowXmlText(grammar->getTargetNamespace()) : std::string();
  if (grammar == nullptr || (!namespaceUri.empty() && described != namespaceUri)) {
    reportUnusableSchema(path, "it does not describe the namespace " + namespaceUri);
    return;
  }
  // Validates every document against the schema, whatever its root element. The grammar is loaded
  // by now, so nothing opens the path; it must only be free of blanks.
  constexpr const char* kName = "layoutData.xsd";
  if (described.empty()) {
    setExternalNoNamespaceSchemaLocation(kName);
    return;
  }
  const std::string location = described + ' ' + kName;
  setExternalSchemaLocation(
      xercesc::TranscodeFromStr(reinterpret_cast<const XMLByte*>(location.c_str()), location.size(),
                                "UTF-8")
          .str());
}

void DOM_ParserImpl::reportUnusableSchema(const std::string& path, const std::string& reason) {
  resetCachedGrammarPool();  // or what was read so far would pass for the whole schema
  printXmlFailure("Schema " + path + " cannot be used: " + reason);
}

void DOM_ParserImpl::resetParser() {
  resetEntities();
  resetDocumentPool();
  resetErrors();
  reset();
}

void guardXmlMemory(const VELPlace& place, const std::function<void()>& action) {
  try {
    action();
  } catch (const xercesc::OutOfMemoryException&) {
    throw VELOutOfMemoryError(place.unit(), place.line);
  } catch (const std::bad_alloc&) {
    throw VELOutOfMemoryError(place.unit(), place.line);
  }
}

std::string narrowXmlText(const XMLCh* message) {
  static_assert(sizeof(XMLCh) == sizeof(char16_t), "Xerces is built for UTF-16");
  std::string narrow;
  if (message != nullptr) {
    guardXmlMemory(VEL_HERE, [&] {
      narrow = I18NString(reinterpret_cast<const char*>(message), "UTF-16").toBytes();
    });
  }
  return narrow;
}
