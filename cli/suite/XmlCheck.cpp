#include "cli/suite/XmlCheck.h"

#include <memory>
#include <new>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "cli/system/XercesStart.h"

namespace {

using xercesc::XMLUni;

/// Stops at the first error, and gives nothing for whatever a document refers to.
class Handler : public xercesc::DefaultHandler {
 public:
  void fatalError(const xercesc::SAXParseException& error) override { throw error; }

  xercesc::InputSource* resolveEntity(const XMLCh* /*publicId*/,
                                      const XMLCh* /*systemId*/) override {
    static const XMLByte nothing[1] = {};
    return new xercesc::MemBufInputSource(nothing, 0, "nothing");
  }
};

std::string utf8(const XMLCh* text) {
  const xercesc::TranscodeToStr converted(text, "UTF-8");
  return {reinterpret_cast<const char*>(converted.str()), converted.length()};
}

std::unique_ptr<xercesc::SAX2XMLReader> createReader() {
  std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(XMLUni::fgXercesSchema, false);
  return reader;
}

}  // namespace

std::optional<std::string> whyNotXml(std::string_view document) try {
  startXerces();
  constexpr unsigned kMostEntities = 10'000;
  xercesc::SecurityManager limits;
  limits.setEntityExpansionLimit(kMostEntities);
  Handler handler;
  const std::unique_ptr<xercesc::SAX2XMLReader> reader = createReader();
  reader->setProperty(XMLUni::fgXercesSecurityManager, &limits);
  reader->setErrorHandler(&handler);
  reader->setEntityResolver(&handler);
  const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(document.data()),
                                          document.size(), "master");
  reader->parse(source);
  return std::nullopt;
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();
} catch (const xercesc::SAXParseException& error) {
  return std::to_string(error.getLineNumber()) + ':' + std::to_string(error.getColumnNumber()) +
         ": " + utf8(error.getMessage());
} catch (const xercesc::SAXException& error) {
  return utf8(error.getMessage());
} catch (const xercesc::XMLException& error) {
  return utf8(error.getMessage());
}
