#include "orvdiff/formats/XmlTreeSkipper.h"

#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/RuntimeException.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace {

/// Four fifths of the largest table that a tree has for its identifiers.
constexpr XMLSize_t kMostIdentifiers = 799'986;

bool isNothing(const XMLCh* text) {
  return text == nullptr || *text == 0;
}

}  // namespace

XmlTreeSkipper::XmlTreeSkipper(xercesc::AbstractDOMParser& builder, xercesc::XMLScanner& scanner,
                               XmlLookupBudget& budget)
    : m_builder(builder), m_scanner(scanner), m_budget(budget) {}

XmlTreeSkipper::~XmlTreeSkipper() = default;

void XmlTreeSkipper::startElement(const xercesc::XMLElementDecl&, unsigned int, const XMLCh*,
                                  const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                                  XMLSize_t attributeCount, bool isEmpty, bool) {
  XMLSize_t declarations = 0;
  XMLSize_t prefixed = 0;
  for (XMLSize_t i = 0; i < attributeCount; ++i) {
    const xercesc::XMLAttr& attribute = *attributes.elementAt(i);
    checkAttribute(attribute);
    if (isDeclaration(attribute)) {
      ++declarations;
    } else if (!isNothing(attribute.getPrefix())) {
      ++prefixed;
    }
  }
  m_budget.startElement(declarations, prefixed);
  if (isEmpty) {
    m_budget.endElement();
  }
}

bool XmlTreeSkipper::isDeclaration(const xercesc::XMLAttr& attribute) const {
  return attribute.getURIId() == m_scanner.getXMLNSNamespaceId() ||
         (isNothing(attribute.getPrefix()) &&
          xercesc::XMLString::equals(attribute.getName(), xercesc::XMLUni::fgXMLNSString));
}

void XmlTreeSkipper::checkAttribute(const xercesc::XMLAttr& attribute) {
  if (attribute.getURIId() == m_scanner.getEmptyNamespaceId() &&
      !isNothing(attribute.getPrefix())) {
    throw xercesc::DOMException(xercesc::DOMException::NAMESPACE_ERR);
  }
  if (attribute.getType() == xercesc::XMLAttDef::ID && m_identifiers++ == kMostIdentifiers) {
    throw xercesc::RuntimeException("", 0, xercesc::XMLExcepts::NodeIDMap_GrowErr,
                                    xercesc::XMLPlatformUtils::fgMemoryManager);
  }
}

void XmlTreeSkipper::endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*) {
  m_budget.endElement();
}

void XmlTreeSkipper::docCharacters(const XMLCh*, XMLSize_t, bool) {
  m_budget.noteText();
}

void XmlTreeSkipper::docComment(const XMLCh*) {}

void XmlTreeSkipper::ignorableWhitespace(const XMLCh*, XMLSize_t, bool) {
  m_budget.noteText();
}

void XmlTreeSkipper::resetDocument() {
  m_builder.resetDocument();
}

void XmlTreeSkipper::startDocument() {
  m_identifiers = 0;
  m_builder.startDocument();
}

void XmlTreeSkipper::endDocument() {
  m_builder.endDocument();
}

void XmlTreeSkipper::XMLDecl(const XMLCh* version, const XMLCh* encoding, const XMLCh* standalone,
                             const XMLCh* actualEncoding) {
  m_builder.XMLDecl(version, encoding, standalone, actualEncoding);
}

void XmlTreeSkipper::docPI(const XMLCh* target, const XMLCh* data) {
  m_builder.docPI(target, data);
}

void XmlTreeSkipper::startEntityReference(const xercesc::XMLEntityDecl& entity) {
  m_builder.startEntityReference(entity);
}

void XmlTreeSkipper::endEntityReference(const xercesc::XMLEntityDecl& entity) {
  m_builder.endEntityReference(entity);
}
