#include "orvdiff/formats/XmlLookupBudget.h"

#include <algorithm>
#include <xercesc/sax/SAXParseException.hpp>

namespace {

// A step takes less than a nanosecond. No real document comes near the second figure: it would have
// to be an element for every five bytes, all of them a thousand levels deep.
constexpr XMLSize_t kLeastSteps = 1'000'000'000;
constexpr XMLSize_t kStepsPerByte = 200;

using namespace std::string_view_literals;

/// "xmlns" in characters of one, two or four bytes of either order, and in EBCDIC.
constexpr std::string_view kXmlnsByWidth[] = {"xmlns"sv, "x\0m\0l\0n\0s"sv,
                                              "x\0\0\0m\0\0\0l\0\0\0n\0\0\0s"sv};
constexpr std::string_view kEbcdicXmlns = "\xA7\x94\x93\x95\xA2"sv;
constexpr char kEbcdicEqualsSign = '\x7E';

bool startsWithAny(std::string_view text, std::initializer_list<std::string_view> starts) {
  return std::any_of(starts.begin(), starts.end(), [text](std::string_view start) {
    return text.substr(0, start.size()) == start;
  });
}

std::size_t widthOfCharacters(std::string_view text) {
  if (startsWithAny(text, {"\0\0\0<"sv, "<\0\0\0"sv, "\0\0\xFE\xFF"sv, "\xFF\xFE\0\0"sv})) {
    return 4;
  }
  return startsWithAny(text, {"\0<"sv, "<\0"sv, "\xFE\xFF"sv, "\xFF\xFE"sv}) ? 2 : 1;
}

XMLSize_t occurrences(std::string_view text, std::string_view sought) {
  XMLSize_t count = 0;
  for (std::size_t at = text.find(sought); at != std::string_view::npos;
       at = text.find(sought, at + sought.size())) {
    ++count;
  }
  return count;
}

std::string_view viewOf(const XMLByte* bytes, XMLSize_t length) {
  return {reinterpret_cast<const char*>(bytes), length};
}

}  // namespace

void XmlLookupBudget::startDocument(const XMLByte* bytes, XMLSize_t length) {
  const std::string_view text = viewOf(bytes, length);
  const bool isEbcdic = startsWithAny(text, {"\x4C\x6F\xA7\x94"sv});
  m_equalsSign = isEbcdic ? kEbcdicEqualsSign : '=';
  m_xmlns = isEbcdic ? kEbcdicXmlns : kXmlnsByWidth[widthOfCharacters(text) / 2];
  m_stepsLeft = kLeastSteps + kStepsPerByte * length;
  m_declarationsInScope = 0;
  m_openElements.clear();
  noteProgress();
}

void XmlLookupBudget::startElement(XMLSize_t declarations, XMLSize_t prefixedAttributes) {
  noteProgress();
  m_openElements.push_back(declarations);
  m_declarationsInScope += declarations;
  spend(1 + prefixedAttributes);
}

void XmlLookupBudget::endElement() {
  noteProgress();
  m_declarationsInScope -= m_openElements.back();
  m_openElements.pop_back();
}

void XmlLookupBudget::noteInput(const XMLByte* bytes, XMLSize_t length) {
  const std::string_view text = viewOf(bytes, length);
  m_attributesRead += static_cast<XMLSize_t>(std::count(text.begin(), text.end(), m_equalsSign));
  m_declarationsRead += occurrences(text, m_xmlns);
  const XMLSize_t scope = m_openElements.size() + m_declarationsInScope + m_declarationsRead;
  if (m_attributesRead > 0 && scope > m_stepsLeft / m_attributesRead) {
    refuse();
  }
}

void XmlLookupBudget::spend(XMLSize_t lookups) {
  const XMLSize_t steps = lookups * (m_openElements.size() + m_declarationsInScope);
  if (steps > m_stepsLeft) {
    refuse();
  }
  m_stepsLeft -= steps;
}

void XmlLookupBudget::refuse() const {
  throw xercesc::SAXParseException(
      u"resolving the names would take too long: elements are nested too deep, or too many "
      u"namespace declarations are in scope",
      m_locator);
}
