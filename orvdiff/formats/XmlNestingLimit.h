#pragma once

#include <xercesc/framework/XMLDocumentHandler.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>

/// Takes what a parser reads and keeps none of it: whoever validates asks only whether the parse
/// succeeds, and building the tree costs several times the reading. Ends the parse of a document
/// whose elements are nested too deep, because resolving a name takes a step for every level.
class XmlNestingLimit : public xercesc::XMLDocumentHandler {
 public:
  /// Far more than any report has; a document at the limit takes a fraction of a second.
  static constexpr int kMaxDepth = 10000;

  /// `locator` tells where the parser stands; it must outlive this.
  explicit XmlNestingLimit(const xercesc::Locator& locator) : m_locator(locator) {}

  void startDocument() override { m_depth = 0; }

  void startElement(const xercesc::XMLElementDecl&, unsigned int, const XMLCh*,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>&, XMLSize_t, bool isEmpty,
                    bool) override {
    if (m_depth == kMaxDepth) {
      throw xercesc::SAXParseException(u"elements are nested more than 10000 levels deep",
                                       m_locator);
    }
    m_depth += isEmpty ? 0 : 1;
  }

  void endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*) override {
    --m_depth;
  }

  void docCharacters(const XMLCh*, XMLSize_t, bool) override {}
  void docComment(const XMLCh*) override {}
  void docPI(const XMLCh*, const XMLCh*) override {}
  void endDocument() override {}
  void endEntityReference(const xercesc::XMLEntityDecl&) override {}
  void ignorableWhitespace(const XMLCh*, XMLSize_t, bool) override {}
  void resetDocument() override {}
  void startEntityReference(const xercesc::XMLEntityDecl&) override {}
  void XMLDecl(const XMLCh*, const XMLCh*, const XMLCh*, const XMLCh*) override {}

 private:
  const xercesc::Locator& m_locator;
  int m_depth = 0;
};
