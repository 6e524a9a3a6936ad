#include <xercesc/dom/DOMException.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/RuntimeException.hpp>

#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"
#include "orvdiff/formats/XmlValidation.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Testing.h"

namespace {

const std::string kSeparator(57, '+');

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) {
    all += text;
  }
  return all;
}

std::string asUtf16(const std::string& ascii) {
  std::string bytes;
  for (const char c : ascii) {
    bytes += {c, '\0'};
  }
  return bytes;
}

const std::string kLaughs = "<!ENTITY a 'ha'><!ENTITY b '" + repeated("&a;", 1000) +
                            "'><!ENTITY c '" + repeated("&b;", 1000) + "'>";

const std::string kUtf16 = R"(<?xml version="1.0" encoding="UTF-16"?><a>x</a>)";

/// What, as which text, and with which message it is refused; null: the document is accepted.
const std::tuple<const char*, std::string, const char*> kDocuments[] = {
    {"elements, comment, CDATA", "<a><!-- c --><b x='1'/><![CDATA[<]]></a>", nullptr},
    {"Latin-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>", nullptr},
    {"UTF-16 with mark", "\xff\xfe" + asUtf16(kUtf16), nullptr},
    {"UTF-16 without mark", asUtf16(kUtf16), nullptr},
    {"internal subset", "<!DOCTYPE a [<!ENTITY e 'x'>]><a b='&e;'>&e;</a>", nullptr},
    {"external entity, not read", "<!DOCTYPE a [<!ENTITY e SYSTEM 'trap.dtd'>]><a>&e;</a>",
     nullptr},
    {"external DTD, not read", "<!DOCTYPE a SYSTEM 'trap.dtd'><a>&nbsp;</a>", nullptr},
    {"external DTD, no network", "<!DOCTYPE a SYSTEM 'http://host.invalid/a.dtd'><a/>", nullptr},
    {"schema hint, not followed",
     "<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
     " xsi:noNamespaceSchemaLocation='trap.dtd'/>",
     nullptr},
    {"as deep as can be", repeated("<a>", 10000) + repeated("</a>", 10000), nullptr},
    {"nothing", "", "invalid document structure"},
    {"truncated", "<a>\n<b>", "input ended before all started tags were ended"},
    {"unknown prefix", "<p:a/>", "prefix 'p' can not be resolved"},
    {"Latin-1 that claims nothing", "<a>\xe9</a>", "invalid byte"},
    {"NUL", std::string("<a>\0</a>", 8), "input ended"},
    {"unknown encoding", "<?xml version='1.0' encoding='klingon'?><a/>", "KLINGON"},
    {"one entity in many rows",
     "<!DOCTYPE a [<!ENTITY e 'Company'>]><a>" + repeated("<r n='&e;'>&e;</r>", 20000) + "</a>",
     nullptr},
    {"a million laughs", "<!DOCTYPE a [" + kLaughs + "]><a>&c;</a>", "expand to too much"},
    {"laughs in a default value", "<!DOCTYPE a [" + kLaughs + "<!ATTLIST a b CDATA '&c;'>]><a/>",
     "expand to too much"},
    {"laughs in declarations",
     "<!DOCTYPE a [<!ENTITY % a '<!-- -->'><!ENTITY % b '" + repeated("&#37;a;", 1000) +
         "'><!ENTITY % c '" + repeated("&#37;b;", 1000) + "'>%c;]><a/>",
     "expand to too much"},
    {"a long laugh, often",
     "<!DOCTYPE a [<!ENTITY a '" + repeated("ha", 50000) + "'>]><a b='" + repeated("&a;", 20000) +
         "'/>",
     "expand to too much"},
    {"entity without declaration", "<a>&e;</a>", "entity 'e' not found"},
    {"one level deeper", repeated("<a>", 10000) + "<b/>" + repeated("</a>", 10000), "10000 levels"},
    {"very deep", repeated("<a>", 100000), "10000 levels"},
};

TEST(XmlEngines, AcceptWellFormedDocumentsWhateverCameBefore) {
  const TestFolder folder;
  TestFolder::write("trap.dtd", "<!ENTITY nbsp ");
  TestFolder::write("good.xml", "<a xmlns='urn:n'/>");
  OrvDiffCtxMetadataXmlFileEngine engine(nullptr);
  for (const auto& [what, text, message] : kDocuments) {
    TestFolder::write("x.xml", text);
    const CapturedOutput output;
    EXPECT_EQ(described(engine.performDiff("x.xml", "x.xml", nullptr)),
              message == nullptr ? "pass x.xml x.xml" : "fail x.xml x.xml")
        << what << output.text();
    EXPECT_THAT(output.text(), testing::HasSubstr(message == nullptr ? "" : message));
    EXPECT_EQ(output.text().empty(), message == nullptr) << what;
    EXPECT_EQ(described(engine.performDiff("good.xml", "good.xml", nullptr)),
              "pass good.xml good.xml")
        << "after: " << what;
  }
}

TEST(XmlEngines, SayWhereADocumentFailsLineByLine) {
  const TestFolder folder;
  TestFolder::write("../x y.xml", "<a>\n<b>");
  OrvDiffAuthoredDThroughTargetsXmlFileEngine engine(nullptr);
  const CapturedOutput output;
  EXPECT_EQ(described(engine.performDiff("no master", "../x y.xml", nullptr)),
            "fail ../x y.xml ../x y.xml");
  EXPECT_EQ(output.text(),
            kSeparator +
                "\nSchema validation error for file: ../x y.xml\n"
                "Schema validation error message: input ended before all started tags were ended; "
                "last tag started is 'b'\n"
                "Schema validation error at line 2\n"
                "Schema validation error at column number 4\n" +
                kSeparator + "\n");
  EXPECT_EQ(output.flushes(), 6);
}

TEST(XmlEngines, CompareWhatIsWellFormed) {
  const TestFolder folder;
  TestFolder::write("m", "<a><coord>1</coord>\r\n</a>");
  TestFolder::write("same", "<a><coord>2</coord>\n</a>");
  TestFolder::write("other", "<a>\nx</a>");
  TestFolder::write("bad", "<a>");
  std::strstream memory;
  memory << "<a>\n</a>" << std::ends;
  OrvDiffCtxMetadataXmlFileEngine engine(nullptr);
  const CapturedOutput output;
  const auto compared = [&engine](const char* actual, std::strstream* stream) {
    return described(engine.performDiff("m", actual, stream));
  };
  EXPECT_EQ(compared("same", nullptr), "pass m same");
  EXPECT_EQ(compared("other", nullptr), "normalized m other at 4 <a>\n</a>|<a>\nx</a>");
  EXPECT_EQ(compared("gone", nullptr), "missing gone gone gone");
  EXPECT_EQ(compared("gone", &memory), "missing gone gone gone") << "the file is what is parsed";
  EXPECT_EQ(compared("bad", &memory), "fail bad bad");
  EXPECT_EQ(compared("other", &memory), "pass m other") << "the memory is what is compared";
}

TEST(XmlEngines, NeedTheHostToInitialiseXerces) {
  xercesc::XMLPlatformUtils::Terminate();
  const std::string raised = raisedBy([] { OrvDiffCtxMetadataXmlFileEngine engine(nullptr); });
  xercesc::XMLPlatformUtils::Initialize();
  EXPECT_THAT(raised, testing::HasSubstr("Call XMLPlatformUtils::Initialize before"));
}

TEST(XmlValidation, PrintsEachKindOfException) {
  const TestFolder folder;
  XmlErrorHandler handler;
  const auto parser = DOM_ParserImpl::create(handler, DOM_ParserImpl::Val_Never);
  const xercesc::RuntimeException runtime("", 0, xercesc::XMLExcepts::Gen_ParseInProgress,
                                          xercesc::XMLPlatformUtils::fgMemoryManager);
  const xercesc::DOMException dom(xercesc::DOMException::NOT_FOUND_ERR);
  const std::pair<std::function<void()>, std::string> kRows[] = {
      {[&] { throw runtime; }, kSeparator +
                                   "\nXML Exception error for file: f\n"
                                   "XML Exception error message: parsing in progress\n" +
                                   kSeparator + "\n"},
      {[&] { throw dom; }, kSeparator +
                               "\nDOM Exception error for file: f\nDOM Exception error message: " +
                               narrowXmlText(dom.getMessage()) + "\n" + kSeparator + "\n"},
      {[] { throw std::bad_alloc(); }, ""},
  };
  for (const auto& [fault, block] : kRows) {
    const CapturedOutput output;
    const auto parse = [raise = fault](const char*, std::uint64_t) { raise(); };
    EXPECT_EQ(described(findXmlFault(*parser, "f", "text", parse)), "fail f f");
    EXPECT_EQ(output.text(), block);
  }
}

TEST(XmlValidation, TakesMalformedUtfForNoFault) {
  const auto endsParse = [](auto report, const char16_t* message) {
    XmlErrorHandler handler;
    try {
      (handler.*report)(xercesc::SAXParseException(message, u"", u"", 1, 2));
    } catch (const xercesc::SAXParseException& exception) {
      return exception.getColumnNumber() == 2;
    }
    return false;
  };
  const char16_t* const kMalformed = u"An exception occurred! Type:UTFDataFormatException, ...";
  EXPECT_FALSE(endsParse(&XmlErrorHandler::fatalError, kMalformed));
  EXPECT_TRUE(endsParse(&XmlErrorHandler::error, kMalformed));
  EXPECT_TRUE(endsParse(&XmlErrorHandler::fatalError, u"Type:TranscodingException"));
  EXPECT_FALSE(endsParse(&XmlErrorHandler::warning, u"careful"));
}

}  // namespace
