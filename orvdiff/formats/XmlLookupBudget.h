#pragma once

#include <string_view>
#include <vector>
#include <xercesc/sax/Locator.hpp>

/// How a document's encoding writes what makes up a tag.
struct XmlTagCharacters {
  std::size_t width = 1;  ///< bytes of a character, in which "<" is to be found
  std::string_view bracket = "<";
  std::string_view xmlns = "xmlns";
  char equalsSign = '=';
};

/// Bounds what resolving the names of one document costs.
///
/// Xerces resolves a prefix by walking up the stack of open elements and through every namespace
/// declaration in scope. Ten thousand open elements, or as many declarations, make each further tag
/// cost ten thousand steps: 4 MB of that take half a minute. So this counts the steps, and ends the
/// parse by a `SAXParseException` when they are out of all proportion to the document's length. A
/// document of a thousand levels and as many declarations stays far below.
class XmlLookupBudget {
 public:
  /// `locator` tells where the parser stands; it must outlive this.
  explicit XmlLookupBudget(const xercesc::Locator& locator) : m_locator(locator) {}

  /// A document of `length` bytes begins; `bytes` shows how its characters are encoded.
  void startDocument(const XMLByte* bytes, XMLSize_t length);

  /// An element with that many namespace declarations and other attributes with a prefix begins.
  void startElement(XMLSize_t declarations, XMLSize_t prefixedAttributes);
  void endElement();

  /// The parser has told of some text.
  void noteText() { m_longestRun = m_declarationsRead = 0; }

  /// The parser goes on to read `bytes`. It resolves the attributes of a tag before it tells of the
  /// tag, so a tag with very many of them must be stopped while it is read. As one such tag counts
  /// whatever has no "<": Xerces resolves no attribute behind one, although it reads on.
  void noteInput(const XMLByte* bytes, XMLSize_t length);

 private:
  void spend(XMLSize_t lookups);
  [[noreturn]] void refuse() const;

  const xercesc::Locator& m_locator;
  XMLSize_t m_stepsLeft = 0;
  XMLSize_t m_declarationsInScope = 0;
  std::vector<XMLSize_t> m_openElements;  ///< declarations of each
  XmlTagCharacters m_characters;
  XMLSize_t m_bytesRead = 0;
  XMLSize_t m_run = 0;         ///< equals signs since the last "<"
  XMLSize_t m_longestRun = 0;  ///< since the parser last told of something
  XMLSize_t m_declarationsRead = 0;
};
