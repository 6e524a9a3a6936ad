#include <cstdlib>
#include <iterator>
#include <random>

#include "orvdiff/platform/I18N.h"
#include "tests/support/LiteralXmlParser.h"
#include "tests/support/Testing.h"

namespace {

/// Documents to begin with: each has what only building a tree refuses, or comes close to it.
// clang-format off
const char* const kDocuments[] = {
    "", "<a/>", "<a>\n<b>", "<p:a/>", "<a>&e;</a>", "<?xml version='1.0 '?><a/>",
    "<?xml version='1.7'?><a/>", "<?xml version='1.0' encoding='klingon'?><a/>",
    "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>",
    "<?xml version='1.1'?><a xmlns:p='urn:p'><b xmlns:p='' p:c='1'/></a>",
    "<?xml version='1.1'?><a xmlns:p='urn:p'><p:b xmlns:p=''/></a>", "<!DOCTYPE :a><a/>",
    "<?xml version='1.0' encoding='UTF-8' standalone='yes'?><!-- c --><a b='1'>x<![CDATA[<]]></a>",
    "<!DOCTYPE a:b:c SYSTEM 'x'><a/>", "<!DOCTYPE a PUBLIC 'p' 'x'><a>&e;</a>",
    "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", "<?p?><a><?x:y z?><?q \u00e9?></a><?r:s:t?>",
    "<!DOCTYPE layout SYSTEM 'urn:l'><layout xmlns='urn:l'><cell/></layout>", "<?\U00010400?><a/>",
    "<?xml version='1.1'?><?\U00010400?><a/>", "<!DOCTYPE \U00010400 SYSTEM 'x'><\U00010400/>",
    "<xml:a xml:lang='x' xmlns:xml='http://www.w3.org/XML/1998/namespace'/>",
    "<xmlns:a xmlns:xmlns='urn:p'/>", "<Type:UTFDataFormatException></a>",
    "<p:a xmlns:p='urn:p' xmlns:q='urn:p' p:b='1' q:b='2'/>",
    "<a>&lt;&#65;&#x10FFFF;&quot;\u00e9\u4e2d</a>", "<layout xmlns='urn:l'><cell/><role/></layout>",
    "<layout xmlns='urn:l'><cell id='i' kind='x'>t<coord/><b xmlns=''/></cell><role/></layout>",
    "<l:layout xmlns:l='urn:l'><l:cell of='i'/><l:cell id='i' kind='k'/><l:role/></l:layout>",
    "<l:layout xmlns:l='urn:l' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><l:cell"
    " xsi:type='l:wide' span='1' type='l:x'><l:filename xsi:nil='true'/></l:cell></l:layout>",
    "<layout xmlns='urn:o' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
    " xsi:schemaLocation='urn:o l.xsd urn:p'/>"};

const char* const kPieces[] = {
    "<?xml version='1.1'?>", "<?xml version='1.0'", " encoding='UTF-16'", " encoding='latin1'",
    " standalone='no'", "<!DOCTYPE a SYSTEM 'x'", "<!DOCTYPE a [", "]>", " xmlns=''", " xmlns:p=''",
    " xmlns:p='urn:l'", " xmlns='urn:l'", " p:a='1'", " xml:lang='x'", " xml:b=''", " id='i'",
    "<p:b>", "</p:b>", "<cell/>", "<role/>", "</layout>", "<?p:q r?>", "<?xml?>", "<!--x-->",
    "<![CDATA[", "]]>", "&lt;", "&e;", "&#0;", "&#x85;", ":", "\"", "'", ">", "/>", "<", "=", " ",
    "\n", "\r\n", "\u00e9", "\u2028", "\U00010400", "\x01",};
// clang-format on

const char* const kEncodings[] = {"UTF-8",    "UTF-8",      "UTF-8",     "UTF-16LE", "UTF-16BE",
                                  "UTF-32LE", "ISO-8859-1", "Shift_JIS", "ibm-1140", "UTF-7"};
const std::string kMarks[] = {"", "", "", "\xff\xfe", "\xfe\xff", "\xef\xbb\xbf"};

class Mutator {
 public:
  std::string nextDocument() {
    std::string text = pick(kDocuments);
    for (std::size_t i = below(4); i > 0; --i) {
      changeText(text);
    }
    std::string bytes = pick(kMarks) + I18NString(text.c_str()).toBytes(pick(kEncodings));
    for (std::size_t i = below(5) == 0 ? 1 + below(3) : 0; i > 0; --i) {
      changeByte(bytes);
    }
    return below(6) == 0 ? bytes.substr(0, below(bytes.size() + 1)) : bytes;
  }

 private:
  void changeText(std::string& text) {
    const std::size_t at = below(text.size() + 1);
    const std::size_t change = below(4);
    if (change == 0) {
      text.erase(at, 1 + below(9));
    } else if (change == 1) {
      text.insert(at, text.substr(below(text.size()), 1 + below(40)));
    } else if (change == 2) {
      text.insert(at, below(100) != 0 ? 1 : 20'000, "ax1- "[below(5)]);
    } else {
      text.insert(at, pick(kPieces));
    }
  }

  void changeByte(std::string& bytes) {
    if (!bytes.empty()) {
      bytes[below(bytes.size())] = static_cast<char>(below(256));
    }
  }

  template <typename T, std::size_t N>
  const T& pick(const T (&from)[N]) {
    return from[below(N)];
  }

  std::size_t below(std::size_t bound) { return m_random() % std::max<std::size_t>(bound, 1); }

  std::mt19937 m_random{20};
};

TEST(XmlDifferential, FaultsAreThoseOfAParserThatBuildsTheTree) {
  const TestFolder folder;
  XmlComparison comparison;
  for (const char* const document : kDocuments) {
    EXPECT_EQ(comparison.differenceOver(document), "") << document;
  }
  Mutator mutator;
  const char* const count = std::getenv("ORVDIFF_XML_DOCUMENTS");  // how many to try
  for (std::size_t i = count != nullptr ? std::stoul(count) : 3000; i > 0; --i) {
    const std::string document = mutator.nextDocument();
    ASSERT_EQ(comparison.differenceOver(document), "") << document;
  }
}

}  // namespace
