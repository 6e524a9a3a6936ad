#pragma once

#include <xercesc/framework/XMLDocumentHandler.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/parsers/AbstractDOMParser.hpp>

#include "orvdiff/formats/XmlLookupBudget.h"

/// Stands between a parser's scanner and its building of the tree, and drops what makes up nearly
/// all of a document: elements, attributes, text and comments. Whoever validates asks only whether
/// the parse succeeds, and building the tree costs several times the reading.
///
/// No one can tell the difference, because building can fail and that failure is kept. What is rare
/// (the XML declaration, the document type, processing instructions) still goes to the builder. An
/// element is only looked at for what the builder would refuse: an attribute whose prefix is bound
/// to no namespace, which XML 1.1 allows, and more identifiers than the tree can index. (The
/// default attributes of a schema have no prefix.)
class XmlTreeSkipper : public xercesc::XMLDocumentHandler {
 public:
  /// `builder` and its `scanner` must outlive this; elements are charged to `budget`.
  XmlTreeSkipper(xercesc::AbstractDOMParser& builder, xercesc::XMLScanner& scanner,
                 XmlLookupBudget& budget);
  ~XmlTreeSkipper() override;

  void startElement(const xercesc::XMLElementDecl& element, unsigned int namespaceId,
                    const XMLCh* prefix, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                    XMLSize_t attributeCount, bool isEmpty, bool isRoot) override;
  void endElement(const xercesc::XMLElementDecl& element, unsigned int namespaceId, bool isRoot,
                  const XMLCh* prefix) override;
  void docCharacters(const XMLCh* text, XMLSize_t length, bool isCData) override;
  void docComment(const XMLCh* text) override;
  void ignorableWhitespace(const XMLCh* text, XMLSize_t length, bool isCData) override;

  void resetDocument() override;
  void startDocument() override;
  void endDocument() override;
  void XMLDecl(const XMLCh* version, const XMLCh* encoding, const XMLCh* standalone,
               const XMLCh* actualEncoding) override;
  void docPI(const XMLCh* target, const XMLCh* data) override;
  void startEntityReference(const xercesc::XMLEntityDecl& entity) override;
  void endEntityReference(const xercesc::XMLEntityDecl& entity) override;

 private:
  bool isDeclaration(const xercesc::XMLAttr& attribute) const;
  void checkAttribute(const xercesc::XMLAttr& attribute);

  xercesc::AbstractDOMParser& m_builder;
  xercesc::XMLScanner& m_scanner;
  XmlLookupBudget& m_budget;
  XMLSize_t m_identifiers = 0;
};
