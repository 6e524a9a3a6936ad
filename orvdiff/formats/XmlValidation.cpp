#include "orvdiff/formats/XmlValidation.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iostream>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/SAXParseException.hpp>
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
        return new xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(""), 0, "");
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

/// Runs `parse`. False when it throws; the parser is then reset if the fault is the document's.
bool isFaultless(DOM_ParserImpl& parser, const std::string& fileName,
                 const std::function<void()>& parse) {
  try {
    parse();
    parser.resetParser();
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
  } catch (...) {
    return false;
  }
  parser.resetParser();
  return false;
}

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

std::unique_ptr<DOM_ParserImpl> DOM_ParserImpl::create(xercesc::ErrorHandler& handler,
                                                       ValSchemes validation) {
  // Tested before the parser exists: its memory already comes from Xerces.
  const bool isXercesInitialized = xercesc::XMLPlatformUtils::fgMemoryManager != nullptr;
  VEL_ASSERT_NAMED(isXercesInitialized,
                   "Call XMLPlatformUtils::Initialize before creating an engine that reads XML");
  return std::unique_ptr<DOM_ParserImpl>(new DOM_ParserImpl(handler, validation));
}

DOM_ParserImpl::DOM_ParserImpl(xercesc::ErrorHandler& handler, ValSchemes validation)
    : xercesc::XercesDOMParser(nullptr, static_cast<XmlExpansionLimit*>(this), nullptr),
      m_nestingLimit(*getScanner()->getLocator()) {
  // Only a schema is worth keeping. A parser that keeps grammars refuses internal DTD subsets,
  // which a document that need only be well-formed may have.
  const bool keepsGrammars = validation != Val_Never;
  cacheGrammarFromParse(keepsGrammars);
  useCachedGrammarInParse(keepsGrammars);
  setDoNamespaces(true);
  setIncludeIgnorableWhitespace(false);
  setValidationScheme(validation);
  setDoSchema(validation != Val_Never);
  setErrorHandler(&handler);
  setLoadExternalDTD(false);
  setXMLEntityResolver(&s_closedWorldResolver);
  setDisableDefaultEntityResolution(true);
}

DOM_ParserImpl::~DOM_ParserImpl() = default;

void DOM_ParserImpl::parseText(const char* bytes, std::uint32_t length) {
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes), length, "", false);
  source.setCopyBufToStream(false);
  const Document limited(*this, length, *getScanner()->getLocator());
  getScanner()->setDocHandler(&m_nestingLimit);
  getScanner()->setDocTypeHandler(&m_entityWatch);  // on each parse: loading a grammar sets it
  parse(source);
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
    DOM_ParserImpl& parser, const std::string& fileName, const char* inMemoryText,
    const std::function<void(const char* bytes, std::uint64_t length)>& parse) {
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
  if (isFaultless(parser, fileName, [&] { parse(bytes, length); })) {
    return nullptr;
  }
  return velNew<OrvDiffResultFail>(VEL_HERE, fileName, fileName);
}
