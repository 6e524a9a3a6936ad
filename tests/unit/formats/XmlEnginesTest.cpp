#include <set>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/RuntimeException.hpp>

#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"
#include "orvdiff/formats/XmlValidation.h"
#include "orvdiff/platform/VELUtMemory.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/LiteralXmlParser.h"
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

/// A root with `count` namespace declarations and `rest`.
std::string manyPrefixes(int count, const std::string& rest) {
  std::string text = "<a";
  for (int i = 0; i < count; ++i) {
    text += " xmlns:p" + std::to_string(i) + "='u'";
  }
  return text + rest;
}

/// Attributes of one tag, all with the prefix declared last.
std::string prefixedAttributes(int count, const std::string& prefix) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += " " + prefix + ":a" + std::to_string(i) + "=''";
  }
  return text + "/>";
}

const std::string kUtf16 = R"(<?xml version="1.0" encoding="UTF-16"?><a>x</a>)";

/// What, as which text, and with which message it is refused; null: the document is accepted.
const std::tuple<const char*, std::string, const char*> kDocuments[] = {
    {"elements, comment, CDATA", "<a><!-- c --><b x='1'/><![CDATA[<]]></a>", nullptr},
    {"Latin-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>", nullptr},
    {"UTF-16 with mark", "\xff\xfe" + asUtf16(kUtf16), nullptr},
    {"UTF-16 without mark", asUtf16(kUtf16), nullptr},
    {"external DTD, not read", "<!DOCTYPE a SYSTEM 'trap.dtd'><a>&nbsp;</a>", nullptr},
    {"external DTD, no network", "<!DOCTYPE a SYSTEM 'http://host.invalid/a.dtd'><a/>", nullptr},
    {"schema hint, not followed",
     "<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
     " xsi:noNamespaceSchemaLocation='trap.dtd'/>",
     nullptr},
    {"20,000 levels", repeated("<a>", 20000) + repeated("</a>", 20000), nullptr},
    {"a thousand levels, prefixes and long tags",
     repeated("<a>", 1000) + manyPrefixes(1000, ">") +
         repeated("<b" + prefixedAttributes(90, "p999"), 2000) + repeated("</a>", 1001),
     nullptr},
    {"much XML in a comment", "<a><!--" + repeated("<p:b xmlns:p='u' p:c='1'/>", 60000) + "--></a>",
     nullptr},
    {"nothing", "", "invalid document structure"},
    {"truncated", "<a>\n<b>", "input ended before all started tags were ended"},
    {"unknown prefix", "<p:a/>", "prefix 'p' can not be resolved"},
    {"Latin-1 that claims nothing", "<a>\xe9</a>", "invalid byte"},
    {"NUL", std::string("<a>\0</a>", 8), "input ended"},
    {"unknown encoding", "<?xml version='1.0' encoding='klingon'?><a/>", "KLINGON"},
    {"internal subset", "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>", "internal subset is not allowed"},
    {"entity without declaration", "<a>&e;</a>", "entity 'e' not found"},
    {"100,000 levels", repeated("<a>", 100000), "would take too long"},
    {"many siblings, deep", repeated("<a>", 10000) + repeated("<b/>", 1000000), "too long"},
    {"many prefixes", manyPrefixes(60000, ">") + repeated("<b/>", 60000), "too long"},
    {"all in one tag", manyPrefixes(800000, prefixedAttributes(800000, "p799999")), "too long"},
    {"all in one UTF-16 tag",
     "\xff\xfe" + asUtf16(manyPrefixes(60000, prefixedAttributes(60000, "p59999"))), "too long"},
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
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  const std::uint64_t before = VELUtMemory::getMemoryConsumption();
  for (int i = 0; i < 100; ++i) {
    compared("same", nullptr);
  }
  EXPECT_LT(VELUtMemory::getMemoryConsumption(), before + 100'000) << "documents are kept";
#endif
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
  auto parser = DOM_ParserImpl::create(handler, DOM_ParserImpl::Val_Never);
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
  };
  for (const auto& [fault, block] : kRows) {
    const CapturedOutput output;
    const auto parse = [raise = fault](const char*, std::uint64_t) { raise(); };
    EXPECT_EQ(described(findXmlFault(parser, "f", "text", parse)), "fail f f");
    EXPECT_EQ(output.text(), block);
  }
}

/// Memory of Xerces of which one allocation can fail. Xerces leaks then; the blocks stay reachable
/// here.
class FailingMemory : public xercesc::MemoryManager {
 public:
  /// The allocation after the next `count` ones fails; none when `count` is negative.
  void failAfter(int count) {
    m_left = count;
    m_hasFailed = false;
  }
  bool hasFailed() const { return m_hasFailed; }

  void* allocate(XMLSize_t size) override {
    if (m_left-- == 0) {
      m_hasFailed = true;
      throw xercesc::OutOfMemoryException();
    }
    return *m_blocks.insert(m_real.allocate(size)).first;
  }
  void deallocate(void* block) override {
    m_blocks.erase(block);
    m_real.deallocate(block);
  }
  MemoryManager* getExceptionMemoryManager() override { return this; }

 private:
  xercesc::MemoryManager& m_real = *xercesc::XMLPlatformUtils::fgMemoryManager;
  std::set<void*> m_blocks;
  int m_left = -1;
  bool m_hasFailed = false;
};

/// The engine, or null when there is no memory for it.
template <typename Engine, typename... Arguments>
std::unique_ptr<OrvDiffFileEngine> created(const Arguments&... arguments) {
  try {
    return std::make_unique<Engine>(nullptr, arguments...);
  } catch (const VELOutOfMemoryError&) {
    return nullptr;
  }
}

TEST(XmlValidation, SurvivesAnyAllocationThatFails) {
  const TestFolder folder;
  TestFolder::write(kComparedSchemaFile, kComparedSchema);
  TestFolder::write("good", "<layout xmlns='urn:l'><cell/></layout>");
  TestFolder::write("bad", "<layout xmlns='urn:l'><cell></layout>");
  static FailingMemory memory;  // what Xerces creates once and for all keeps it
  xercesc::MemoryManager* const before = xercesc::XMLPlatformUtils::fgMemoryManager;
  xercesc::XMLPlatformUtils::fgMemoryManager = &memory;
  const std::function<std::unique_ptr<OrvDiffFileEngine>()> kEngines[] = {
      created<OrvDiffCtxMetadataXmlFileEngine>, [] {
        return created<OrvDiffLayoutDataXmlFileEngine>(kComparedNamespace, kComparedSchemaFile);
      }};
  for (const auto& create : kEngines) {
    bool hasFailed = true;
    std::set<std::string> outcomes;
    for (int n = 0; hasFailed; n += 1 + n / 64) {
      memory.failAfter(n);
      const std::unique_ptr<OrvDiffFileEngine> engine = create();
      ASSERT_TRUE(engine != nullptr || memory.hasFailed()) << n;
      const auto compared = [&engine](const char* name) {
        const CapturedOutput output;
        try {
          return described(engine->performDiff(name, name, nullptr));
        } catch (const VELOutOfMemoryError&) {  // outside the parse: the document is not to blame
          return std::string("out of memory");
        }
      };
      if (engine != nullptr) {
        const std::string first = compared("good");
        hasFailed = memory.hasFailed();
        memory.failAfter(-1);
        outcomes.insert(first);
        EXPECT_EQ(first != "pass good good", hasFailed) << n;
        EXPECT_EQ(compared("bad"), "fail bad bad") << n;
        EXPECT_EQ(compared("good"), "pass good good") << n;
      }
    }
    const bool loadsSchema = &create != kEngines;
    EXPECT_EQ(outcomes.count("out of memory") > 0, loadsSchema);
    EXPECT_EQ(outcomes.count("fail good good"), 1U);
  }
  xercesc::XMLPlatformUtils::fgMemoryManager = before;
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
