#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/RuntimeException.hpp>

#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"
#include "orvdiff/formats/OrvXerces.h"
#include "orvdiff/formats/XmlFault.h"
#include "orvdiff/platform/VELUtMemory.h"
#include "tests/support/LiteralXmlParser.h"
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

/// What, as which text, and with which message it is refused; "": the document is accepted. Short
/// faults are left to the comparison with a parser that builds the tree.
TEST(XmlEngines, ReadNothingElseAndTakeTimeInProportion) {
  const std::string crowded = manyPrefixes(60000, numbered(" p59999:a", 60000, "=''") + "/>");
  const std::tuple<const char*, std::string, const char*> kDocuments[] = {
      {"Latin-1 that claims nothing", "<a>\xe9</a>", "invalid byte"},
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

TEST(XmlValidation, HandlesWhatNoDocumentBringsAbout) {
  XmlErrorHandler handler;
  std::shared_ptr<XmlParser> parser;
  const CapturedOutput output;
  const auto raise = [](const char*, std::uint64_t) {
    throw xercesc::RuntimeException("", 0, xercesc::XMLExcepts::Gen_ParseInProgress);
  };
  EXPECT_EQ(described(findXmlFault(parser, XmlDocumentKind::CtxMetadata, "f", "text", raise)),
            "fail f f");
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

/// Memory of Xerces of which one allocation can fail. Xerces leaks then; the blocks stay reachable
/// here.
struct FailingMemory : xercesc::MemoryManager {
  int left = 0;  ///< allocations up to the one that fails; 0: it has failed, or none is to fail

  void* allocate(XMLSize_t size) override {
    if (left > 0 && --left == 0) {
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
};

/// What `action` returns, or "out of memory".
template <typename Action>
std::string unlessOutOfMemory(Action action) {
  try {
    return action();
  } catch (const VELOutOfMemoryError&) {
    return "out of memory";
  }
}

std::unique_ptr<OrvDiffFileEngine> createEngine(bool loadsSchema) {
  if (loadsSchema) {
    return std::make_unique<OrvDiffLayoutDataXmlFileEngine>(nullptr, kComparedNamespace,
                                                            kComparedSchemaFile);
  }
  return std::make_unique<OrvDiffCtxMetadataXmlFileEngine>(nullptr);
}

enum Outcome : int { kUntouched = 10, kOutOfMemory, kFailed, kWrong };

/// What comes of an engine's first document if the n-th allocation fails, and nothing after it.
Outcome outcomeOf(bool loadsSchema, int n, FailingMemory& memory) {
  memory.left = n;
  const std::unique_ptr<OrvDiffFileEngine> engine = createEngine(loadsSchema);
  const auto verdict = [&engine](const char* name) {
    const CapturedOutput output;
    return unlessOutOfMemory([&] { return described(engine->performDiff(name, name, nullptr)); });
  };
  const std::string first = verdict("good");
  const bool isTouched = memory.left == 0;
  memory.left = 0;
  if ((first != "pass good good") != isTouched || verdict("bad") != "fail bad bad" ||
      verdict("good") != "pass good good") {
    return kWrong;
  }
  return !isTouched ? kUntouched : first == "out of memory" ? kOutOfMemory : kFailed;
}

// Each try in a process of its own: Xerces itself may die of a failed allocation while it builds a
// schema's content model (its clean-up reads what it had not yet set up).
TEST(XmlValidation, SurvivesAnyAllocationThatFails) {
  const TestFolder folder;
  XmlComparison().differenceOver("<a/>");  // writes the schema, and Xerces starts up
  TestFolder::write("good", "<layout xmlns='urn:l'><cell/></layout>");
  TestFolder::write("bad", "<layout xmlns='urn:l'><cell></layout>");
  for (const bool loadsSchema : {false, true}) {
    std::set<int> outcomes;
    for (int n = 1; outcomes.count(kUntouched) == 0; n += 1 + n / 64) {
      const pid_t child = fork();
      if (child == 0) {
        static FailingMemory memory;
        xercesc::XMLPlatformUtils::fgMemoryManager = &memory;
        _exit(outcomeOf(loadsSchema, n, memory));
      }
      int status = 0;
      ASSERT_EQ(waitpid(child, &status, 0), child);
      const bool hasOutcome = WIFEXITED(status) && WEXITSTATUS(status) >= kUntouched;
      EXPECT_TRUE(hasOutcome || loadsSchema) << n;
      outcomes.insert(hasOutcome ? WEXITSTATUS(status) : 0);
      EXPECT_EQ(outcomes.count(kWrong), 0U) << n;
    }
    EXPECT_EQ(outcomes.count(kOutOfMemory), 1U);
    EXPECT_EQ(outcomes.count(kFailed), 1U);
  }
}

}  // namespace
