#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/RuntimeException.hpp>

#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"
#include "orvdiff/formats/OrvXerces.h"
#include "orvdiff/formats/XmlFault.h"
#include "orvdiff/formats/XmlValidation.h"
#include "orvdiff/platform/VELUtMemory.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Testing.h"

namespace {

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

/// `before` and `after` around each number below `count`.
std::string numbered(const std::string& before, int count, const std::string& after) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += before + std::to_string(i) + after;
  }
  return text;
}

/// A root with `count` namespace declarations and `rest`.
std::string manyPrefixes(int count, const std::string& rest) {
  return "<a" + numbered(" xmlns:p", count, "='u'") + rest;
}

/// What, as which text, and with which message it is refused; "": the document is accepted. More
/// short faults are among the seeds of the fuzz target, which compares with a parser that builds
/// the tree.
TEST(XmlEngines, ReadNothingElseAndTakeTimeInProportion) {
  // Without its end: it is refused while it is read, not once its names have been resolved.
  const std::string crowded = manyPrefixes(60000, numbered(" p59999:a", 60000, "=''"));
  const std::tuple<const char*, std::string, const char*> kDocuments[] = {
      {"Latin-1 that claims nothing", "<a>\xe9</a>", "invalid byte"},
      {"prefix of an attribute that is unbound again",
       "<?xml version='1.1'?><a xmlns:p='u'><b xmlns:p='' p:c='1'/></a>", "DOM Exception"},
      {"external DTD, not read", "<!DOCTYPE a SYSTEM 'trap.dtd'><a>&nbsp;</a>", ""},
      {"external DTD, no network", "<!DOCTYPE a SYSTEM 'http://host.invalid/a.dtd'><a/>", ""},
      {"schema hint, not followed",
       "<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
       " xsi:noNamespaceSchemaLocation='trap.dtd'/>",
       ""},
      {"20,000 levels", repeated("<a>", 20000) + repeated("</a>", 20000), ""},
      {"100,000 levels", repeated("<a>", 100000), "would take too long"},
      {"a thousand levels, prefixes and long tags",
       repeated("<a>", 1000) + manyPrefixes(1000, ">") +
           repeated("<b" + numbered(" p999:a", 90, "=''") + "/>", 2000) + repeated("</a>", 1001),
       ""},
      {"many siblings, deep", repeated("<a>", 10000) + repeated("<b/>", 1000000), "too long"},
      {"many prefixes", manyPrefixes(60000, ">") + repeated("<b/>", 60000), "too long"},
      {"XML in a comment", "<a><!--" + repeated("<p:b xmlns:p='u' p:c='1'/>", 60000) + "--></a>",
       ""},
      {"all in one tag", crowded, "too long"},
      {"all in one UTF-16 tag", "\xff\xfe" + asUtf16(crowded), "too long"},
      {"the next", "<a xmlns='urn:n'/>", ""},
  };
  const TestFolder folder;
  TestFolder::write("trap.dtd", "<!ENTITY nbsp ");
  OrvDiffCtxMetadataXmlFileEngine engine(nullptr);
  for (const auto& [what, text, message] : kDocuments) {
    const CapturedOutput output;
    EXPECT_EQ(compared(engine, text, text), *message == '\0' ? "pass m a" : "fail a a") << what;
    EXPECT_THAT(output.text(), HasSubstr(message)) << what;
    EXPECT_EQ(output.text().empty(), *message == '\0') << what;
  }
}

TEST(XmlEngines, CompareWhatIsWellFormed) {
  const TestFolder folder;
  TestFolder::write("m", "<a><coord>1</coord>\r\n</a>");
  TestFolder::write("same", "<a><coord>2</coord>\n</a>");
  TestFolder::write("other", "<a>\nx</a>");
  TestFolder::write("bad", "<a>");
  std::strstream memory;
  memory << "<a>\n</a>" << std::ends;
  OrvDiffAuthoredDThroughTargetsXmlFileEngine engine(nullptr);
  const CapturedOutput output;
  const std::tuple<const char*, std::strstream*, const char*> kRows[] = {
      {"same", nullptr, "pass m same"},
      {"other", nullptr, "normalized m other at 4 <a>\n</a>|<a>\nx</a>"},
      {"gone", nullptr, "missing gone gone gone"},
      {"gone", &memory, "missing gone gone gone"},  // the file is what is parsed
      {"other", &memory, "pass m other"},           // the memory is what is compared
      {"bad", &memory, "fail bad bad"},
  };
  for (const auto& [actual, stream, verdict] : kRows) {
    EXPECT_EQ(described(engine.performDiff("m", actual, stream)), verdict);
  }
  EXPECT_EQ(output.flushes(), 6) << "line by line";
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  const std::uint64_t before = VELUtMemory::getMemoryConsumption();
  for (int i = 0; i < 100; ++i) {
    described(engine.performDiff("m", "same", nullptr));
  }
  EXPECT_LT(VELUtMemory::getMemoryConsumption(), before + 100'000) << "documents are kept";
#endif
}

TEST(XmlEngines, NeedXercesFromTheirFirstDocumentOn) {
  const TestFolder folder;
  TestFolder::write("m", "<a/>");
  OrvDiffCtxMetadataXmlFileEngine engine(nullptr);
  const auto compare = [&engine] { described(engine.performDiff("m", "m", nullptr)); };
  xercesc::XMLPlatformUtils::Terminate();
  const std::string raised = raisedBy(compare);
  OrvXerces::initializeOnDemand([](const char*) { std::abort(); });
  EXPECT_EQ(raisedBy(compare), "nothing");
  EXPECT_THAT(raised, HasSubstr("Call XMLPlatformUtils::Initialize before"));
}

TEST(XmlValidation, TellsAFaultOfTheDocumentFromOneOfTheMachine) {
  XmlErrorHandler handler;
  const CapturedOutput output;
  // What a parse throws, what comes of the document, and whether the parser may be used again.
  const std::tuple<std::function<void()>, const char*, bool> kRows[] = {
      {[] { throw xercesc::OutOfMemoryException(); }, "fail f f", false},
      {[] { throw VELOutOfMemoryError("Unit", 7); }, "raised", false},
      {[] { throw VELStdExceptionError(std::runtime_error(""), "Unit", 7); }, "raised", false},
      {[] { throw xercesc::RuntimeException("", 0, xercesc::XMLExcepts::Gen_ParseInProgress); },
       "fail f f", true}};
  static auto& allUsed = *new std::vector<std::shared_ptr<XmlParser>>;  // some are never destroyed
  for (const auto& row : kRows) {
    std::shared_ptr<XmlParser> parser;
    const auto parse = [&row](auto, auto) { std::get<0>(row)(); };
    std::string outcome = "raised";
    storyOf([&] {
      outcome = described(findXmlFault(parser, XmlDocumentKind::CtxMetadata, "f", "text", parse));
    });
    EXPECT_EQ(outcome, std::get<1>(row));
    const std::shared_ptr<XmlParser> used = allUsed.emplace_back(parser);
    EXPECT_EQ(findXmlFault(parser, XmlDocumentKind::CtxMetadata, "f", "", [](auto, auto) {}),
              nullptr);
    EXPECT_EQ(parser == used, std::get<2>(row));
  }
  EXPECT_THAT(output.text(), HasSubstr("+\nXML Exception error for file: f\n"
                                       "XML Exception error message: parsing in progress\n+"));
  const auto problem = [](const char16_t* message) {
    return xercesc::SAXParseException(message, u"", u"", 1, 2);
  };
  const char16_t* const kMalformed = u"An exception occurred! Type:UTFDataFormatException, ...";
  EXPECT_NO_THROW(handler.fatalError(problem(kMalformed)));
  EXPECT_THROW(handler.error(problem(kMalformed)), xercesc::SAXParseException);
  EXPECT_THROW(handler.fatalError(problem(u"Type:Transcoding")), xercesc::SAXParseException);
  EXPECT_NO_THROW(handler.warning(problem(u"careful")));
}

}  // namespace
