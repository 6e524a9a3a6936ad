#include "orvdiff/formats/XmlValidation.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iostream>
#include <stdexcept>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/platform/I18N.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

constexpr const char* kSeparator = "+++++++++++++++++++++++++++++++++++++++++++++++++++++++++";
constexpr const char* kMalformedUtf = "Type:UTFDataFormatException";

/// Names what counts as empty. The grammar of an external DTD is kept under this name, so it must
/// not be one that a document chooses, nor a namespace: not even that of no namespace, "".
constexpr const char* kNothing = "orvdiff:nothing";

/// Stands between the parser and the world outside the document.
class ClosedWorldResolver : public xercesc::XMLEntityResolver {
 public:
  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override {
    switch (resource->getResourceIdentifierType()) {
      case xercesc::XMLResourceIdentifier::SchemaGrammar:
        return nullptr;  // a document's hint; the parser then goes without
      case xercesc::XMLResourceIdentifier::SchemaInclude:
      case xercesc::XMLResourceIdentifier::SchemaImport:
      case xercesc::XMLResourceIdentifier::SchemaRedefine:
        return openBesideSchema(*resource);
      default:
        return new xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(""), 0, kNothing);
    }
  }

 private:
  /// Only a schema includes and imports, and every schema is one that an engine loaded.
  static xercesc::InputSource* openBesideSchema(const xercesc::XMLResourceIdentifier& resource) {
    const std::string location = narrowXmlText(resource.getSystemId());
    if (location.empty() || location.find("://") != std::string::npos) {
      return nullptr;
    }
    return new xercesc::LocalFileInputSource(resource.getBaseURI(), resource.getSystemId());
  }
};

ClosedWorldResolver s_closedWorldResolver;

/// Prints a failure block; `position` has its last lines.
void printBlock(const std::string& kind, const std::string& fileName, const XMLCh* message,
                std::initializer_list<std::string> position) {
  printXmlFailure(kSeparator);
  printXmlFailure(kind + " error for file: " + fileName);
  printXmlFailure(kind + " error message: " + narrowXmlText(message));
  std::for_each(position.begin(), position.end(), printXmlFailure);
  printXmlFailure(kSeparator);
}

/// Runs `parse`, and prints what Xerces throws. False when anything was thrown.
bool isFaultless(const std::string& fileName, const std::function<void()>& parse) {
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

/// The same, and leaves a parser that is reset, or known to be beyond that.
bool isFaultlessAndReset(DOM_ParserImpl& parser, const std::string& fileName,
                         const std::function<void()>& parse) {
  try {
    const bool result = isFaultless(fileName, parse);
    parser.resetParser();
    return result;
  } catch (...) {
    parser.giveUp();
    return false;
  }
}

/// A text that tells a budget what is read of it.
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
  // Tested before the parser exists: its memory already comes from Xerces.
  const bool isXercesInitialized = xercesc::XMLPlatformUtils::fgMemoryManager != nullptr;
  VEL_ASSERT_NAMED(isXercesInitialized,
                   "Call XMLPlatformUtils::Initialize before creating an engine that reads XML");
  return velGuardAllocation(VEL_HERE, [&handler, validation] {
    try {
      return std::shared_ptr<DOM_ParserImpl>(new DOM_ParserImpl(handler, validation),
                                             [](DOM_ParserImpl* parser) {
                                               if (parser->isUsable()) {
                                                 delete parser;
                                               }
                                             });
    } catch (const xercesc::OutOfMemoryException&) {
      throw std::bad_alloc();
    } catch (const xercesc::XMLException& exception) {
      throw std::runtime_error(narrowXmlText(exception.getMessage()));
    }
  });
}

DOM_ParserImpl::DOM_ParserImpl(xercesc::ErrorHandler& handler, ValSchemes validation)
    : m_handler(handler),
      m_validation(validation),
      m_lookupBudget(*getScanner()->getLocator()),
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

std::shared_ptr<DOM_ParserImpl> DOM_ParserImpl::createAnother() const {
  return create(m_handler, m_validation);
}

void DOM_ParserImpl::parseText(const char* bytes, std::uint32_t length) {
  const auto* const text = reinterpret_cast<const XMLByte*>(bytes);
  m_lookupBudget.startDocument(text, length);
  parse(WatchedText(text, length, m_lookupBudget));
}

void DOM_ParserImpl::resetParser() {
  resetEntities();
  resetDocumentPool();
  resetErrors();
  reset();
}

std::string narrowXmlText(const XMLCh* message) {
  static_assert(sizeof(XMLCh) == sizeof(char16_t), "Xerces is built for UTF-16");
  return message != nullptr ? I18NString(reinterpret_cast<const char*>(message), "UTF-16").toBytes()
                            : std::string();
}

void printXmlFailure(const std::string& line) {
  std::cout << line << std::endl;
}

OrvDiffResult* findXmlFault(
    std::shared_ptr<DOM_ParserImpl>& parser, const std::string& fileName, const char* inMemoryText,
    const std::function<void(const char* bytes, std::uint64_t length)>& parse) {
  if (!parser->isUsable()) {
    parser = parser->createAnother();
  }
  OrvTextBuffer buffer;
  std::uint64_t length = 0;
  if (inMemoryText == nullptr) {
    OrvFileHandle file(fileName.c_str(), "rt");
    OrvDiffResult* const missing = OrvDiffLib::checkOpenFiles(fileName, fileName, file, file);
    if (missing != nullptr) {
      return missing;
    }
    buffer = OrvDiffLib::slurpFile(file);
    length = static_cast<std::uint64_t>(std::ftell(file));  // what was read, should it still grow
  } else {
    length = std::strlen(inMemoryText);
  }
  const char* const bytes = inMemoryText != nullptr ? inMemoryText : buffer.get();
  if (isFaultlessAndReset(*parser, fileName, [&] { parse(bytes, length); })) {
    return nullptr;
  }
  return velNew<OrvDiffResultFail>(VEL_HERE, fileName, fileName);
}
