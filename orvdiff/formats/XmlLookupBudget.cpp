#include "orvdiff/formats/XmlLookupBudget.h"

#include <algorithm>
#include <iterator>
#include <xercesc/sax/SAXParseException.hpp>

namespace {

// A step takes less than a nanosecond. No real document comes near the second figure: it would have
// to be an element for every five bytes, all of them a thousand levels deep.
constexpr XMLSize_t kLeastSteps = 1'000'000'000;
constexpr XMLSize_t kStepsPerByte = 200;

using namespace std::string_view_literals;

/// The encodings that Xerces tells by a document's first bytes; all others write ASCII in bytes.
struct Beginning {
  std::string_view bytes;
  XmlTagCharacters characters;
};
constexpr std::string_view kWideXmlns = "x\0m\0l\0n\0s"sv;
constexpr std::string_view kWidestXmlns = "x\0\0\0m\0\0\0l\0\0\0n\0\0\0s"sv;
constexpr Beginning kBeginnings[] = {
    {"\x4C\x6F\xA7\x94"sv, {1, "\x4C"sv, "\xA7\x94\x93\x95\xA2"sv, '\x7E'}},
    {"\0\0\0<"sv, {4, "\0\0\0<"sv, kWidestXmlns, '='}},
    {"\0\0\xFE\xFF"sv, {4, "\0\0\0<"sv, kWidestXmlns, '='}},
    {"<\0\0\0"sv, {4, "<\0\0\0"sv, kWidestXmlns, '='}},
    {"\xFF\xFE\0\0"sv, {4, "<\0\0\0"sv, kWidestXmlns, '='}},
    {"\0<"sv, {2, "\0<"sv, kWideXmlns, '='}},
    {"\xFE\xFF"sv, {2, "\0<"sv, kWideXmlns, '='}},
    {"<\0"sv, {2, "<\0"sv, kWideXmlns, '='}},
    {"\xFF\xFE"sv, {2, "<\0"sv, kWideXmlns, '='}},
};

XmlTagCharacters charactersOf(std::string_view text) {
  const auto* const found = std::find_if(
      std::begin(kBeginnings), std::end(kBeginnings),
      [text](const Beginning& b) { return text.substr(0, b.bytes.size()) == b.bytes; });
  return found != std::end(kBeginnings) ? found->characters : XmlTagCharacters();
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
  m_characters = charactersOf(viewOf(bytes, length));
  m_bytesRead = 0;
  m_run = 0;
  m_stepsLeft = kLeastSteps + kStepsPerByte * length;
  m_declarationsInScope = 0;
  m_openElements.clear();
  noteText();
}

void XmlLookupBudget::startElement(XMLSize_t declarations, XMLSize_t prefixedAttributes) {
  noteText();
  m_openElements.push_back(declarations);
  m_declarationsInScope += declarations;
  spend(1 + prefixedAttributes);
}

void XmlLookupBudget::endElement() {
  noteText();
  m_declarationsInScope -= m_openElements.back();
  m_openElements.pop_back();
}

void XmlLookupBudget::noteInput(const XMLByte* bytes, XMLSize_t length) {
  const std::string_view text = viewOf(bytes, length);
  const auto equalsSigns = [this](std::string_view part) {
    return static_cast<XMLSize_t>(std::count(part.begin(), part.end(), m_characters.equalsSign));
  };
  const auto isWhole = [this](std::size_t at) {
    return at == std::string_view::npos || (m_bytesRead + at) % m_characters.width == 0;
  };
  std::size_t first = text.find(m_characters.bracket);
  while (!isWhole(first)) {
    first = text.find(m_characters.bracket, first + 1);
  }
  std::size_t last = text.rfind(m_characters.bracket);
  while (!isWhole(last)) {
    last = last != 0 ? text.rfind(m_characters.bracket, last - 1) : std::string_view::npos;
  }
  const XMLSize_t all = equalsSigns(text);
  if (first == std::string_view::npos) {
    m_run += all;
    m_longestRun = std::max(m_longestRun, m_run);
  } else {
    m_longestRun = std::max({m_longestRun, m_run + equalsSigns(text.substr(0, first)), all});
    m_run = equalsSigns(text.substr(last));
  }
  m_bytesRead += length;
  m_declarationsRead += occurrences(text, m_characters.xmlns);
  const XMLSize_t scope = m_openElements.size() + m_declarationsInScope + m_declarationsRead;
  if (m_longestRun > 0 && scope > m_stepsLeft / m_longestRun) {
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
