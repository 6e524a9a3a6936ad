#include "orvdiff/formats/XmlModule.h"

#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "orvdiff/formats/XmlValidation.h"

namespace {

class CtxMetadataXmlErrorHandler : public XmlErrorHandler {};
class AuthoredDThroughTargetsXmlErrorHandler : public XmlErrorHandler {};
class DataXmlErrorHandler : public XmlErrorHandler {};

CtxMetadataXmlErrorHandler s_ctxMetadataXmlErrorHandler;
AuthoredDThroughTargetsXmlErrorHandler s_authoredDThroughTargetsXmlErrorHandler;
DataXmlErrorHandler s_dataXmlErrorHandler;

std::shared_ptr<XmlParser> createParser(XmlDocumentKind kind) {
  switch (kind) {
    case XmlDocumentKind::CtxMetadata:
      return DOM_ParserImpl::create(s_ctxMetadataXmlErrorHandler, DOM_ParserImpl::Val_Never);
    case XmlDocumentKind::AuthoredDThroughTargets:
      return DOM_ParserImpl::create(s_authoredDThroughTargetsXmlErrorHandler,
                                    DOM_ParserImpl::Val_Never);
    case XmlDocumentKind::LayoutData:
      break;
  }
  return DOM_ParserImpl::create(s_dataXmlErrorHandler, DOM_ParserImpl::Val_Always);
}

/// Takes the place of Xerces' own handler, which ends the process.
class PanicForwarder : public xercesc::PanicHandler {
 public:
  ~PanicForwarder() override;
  void panic(const PanicReasons reason) override { m_onPanic(getPanicReasonString(reason)); }

  void (*m_onPanic)(const char* reason) = nullptr;
};

PanicForwarder::~PanicForwarder() = default;

PanicForwarder s_panicForwarder;

void initializeXerces(void (*onPanic)(const char* reason)) {
  static bool s_isInitialized = false;
  if (s_isInitialized) {
    return;
  }
  s_panicForwarder.m_onPanic = onPanic;
  try {
    xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                          &s_panicForwarder);
  } catch (...) {
    onPanic("it could not be initialised");
    throw;
  }
  s_isInitialized = true;
}

}  // namespace

const orvdiff::detail::XmlModule* OrvXmlModuleEntry() {
  static constexpr orvdiff::detail::XmlModule kModule = {createParser, initializeXerces};
  return &kModule;
}

/// Where the module's objects are part of the library, there is nothing to load.
const orvdiff::detail::XmlModule& orvdiff::detail::xmlModule() {
  return *OrvXmlModuleEntry();
}
