#include "orvdiff/engine/InMemoryOutput.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "tests/support/Testing.h"
#include "tests/unit/engine/TestEngine.h"

namespace {

using namespace std::string_literals;

const std::string kActual = "../webcontent/bi/type/R.pdf";

/// Reads the output's file when it is notified.
struct DiskWitness : OrvDiffListener {
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override {
    onDisk = TestFolder::read(result.getActualName());
  }
  std::string onDisk = "(not notified)";
};

/// A frozen stream takes no more text once its buffer is full.
void expectUnfrozen(std::strstream& output) {
  output.clear();
  output << std::string(4096, 'x');
  EXPECT_TRUE(output.good());
}

TEST(InMemoryOutput, AFailingOneIsOnDiskBeforeAnyoneIsNotified) {
  const std::string kLong = std::string(10000, 'x') + '\0';
  const std::tuple<bool, bool, std::string, std::string> kRows[] = {
      {false, true, "bytes\0\xFF more\r\n"s, "bytes\0\xFF more\r\n"s},  // passes, binary, ...
      {false, true, "", ""},
      {false, false, "gr\xC3\xB6\r\n\xE9\0after"s, "gr\xC3\xB6\r\n\xE9"},
      {false, false, "\0after"s, "stale"},
      {true, true, "bytes", "stale"},
      {false, true, kLong, "(missing)"},  // does not fit on the disk
      {false, false, kLong, "(missing)"},
  };
  const TestFolder folder;
  TestFolder::write("Masters/R.pdf", "");
  for (const auto& [passes, binary, written, onDisk] : kRows) {
    TestFolder::write(kActual, "stale");
    OrvTestInfo info;
    std::strstream& output = info.addOutput(kActual, binary);
    output << written;
    TestEngine engine(nullptr, [&, isPass = passes](const auto& m, const auto& a, auto* stream) {
      EXPECT_EQ(stream, &output);
      stream->ignore(1000000);  // an engine may leave the read position anywhere
      return isPass ? static_cast<OrvDiffResult*>(new OrvDiffResultPass(m, a))
                    : new OrvDiffResultFailDiff(m, a);
    });
    DiskWitness witness;
    const LimitedTo smallDisk(RLIMIT_FSIZE, 5000);
    engine.verifyOutput({&witness}, "R.xml", &info);
    EXPECT_EQ(witness.onDisk, onDisk) << written;
    EXPECT_EQ(std::filesystem::is_empty("../webcontent/bi/type"), onDisk == "(missing)");
    if (onDisk == "(missing)" && !binary) {
      std::filesystem::remove("../webcontent/bi/type");
      EXPECT_EQ(raisedBy([&] { engine.verifyOutput({}, "R.xml", &info); }),
                "OrvDiffLib: VEL_ASSERT(bFileOpened);");
    }
    expectUnfrozen(output);
    output.str();  // freezes it; its memory is freed nevertheless
  }
}

/// Expects this text and these bytes of an output, every time; "..." stands for bytes that the host
/// wrote after the put position.
void expectHeld(std::strstream& output, const std::string& text, const std::string& bytes) {
  for (int time = 0; time < 2; ++time) {
    InMemoryOutput held(output);
    EXPECT_STREQ(held.text(), text.c_str());
    EXPECT_EQ(std::string(held.bytes()) + (held.isWhole() ? "" : "..."), bytes);
    held.rewind();
  }
}

TEST(InMemoryOutput, OfAHostThatWrites) {
  const std::string kLong(20, 'x');  // makes a stream take new memory
  // What is written, where the host goes back to, what it writes there, and what is held.
  const std::tuple<std::string, int, const char*, std::string, std::string> kRows[] = {
      {"<p>0000</p>\0"s, 3, "0042", "<p>0042</p>", "<p>0042"},
      {"fifteen letters\0"s, 0, "", "fifteen letters", ""},
      {"sixteen letters,", 16, "", "sixteen letters,", "sixteen letters,"},
      {kLong + '\0', 21, "", kLong, kLong + '\0'},
      {kLong + '\0', 2, "", kLong, "xx..."},
      {kLong + '\0', 0, "", kLong, "..."},
      {"\0"s, 0, "", "", ""},
  };
  for (const auto& [written, goesBackTo, patch, text, bytes] : kRows) {
    std::strstream output;
    output << written;
    output.seekp(goesBackTo);
    output << patch;
    const std::strstream::pos_type position = output.tellp();
    { const InMemoryOutput held(output); }
    EXPECT_EQ(output.tellp(), position);
    expectHeld(output, text, bytes);
    expectUnfrozen(output);
  }
  std::strstream measured;  // by a host that learns what is reserved
  measured << "text\0"s;
  measured.seekg(0, std::ios::end);
  expectHeld(measured, "text", "text\0"s);
}

/// On an array without a byte to spare, so that the address sanitizer sees a byte too many.
TEST(InMemoryOutput, OfAHostThatHasABufferOfItsOwn) {
  using Ios = std::ios;
  const std::tuple<std::string, Ios::openmode, std::string, const char*, std::string> kRows[] = {
      {"<p>end</p>\0<p>left over"s, Ios::in, "", "<p>end</p>", "<p>end</p>\0<p>left over"s},
      {"sixteen letters,", Ios::in, "", "sixteen letters,", "sixteen letters,"},
      {"fifteen letters\0"s, Ios::in, "", "fifteen letters", "fifteen letters\0"s},
      {"<p>\0        "s, Ios::out | Ios::app, "more\0"s, "<p>more", "<p>more\0"s},
      {"<p>\0        "s, Ios::in | Ios::app, "", "<p>", "<p>"},
      {"never ended", Ios::out, "NEVER", "NEVER ended", "NEVER"},
  };
  for (const auto& [buffer, mode, written, text, bytes] : kRows) {
    const std::unique_ptr<char[]> array(new char[buffer.size()]);
    buffer.copy(array.get(), buffer.size());
    std::strstream output(array.get(), static_cast<int>(buffer.size()), mode);
    output << written;
    expectHeld(output, text, bytes);
  }
  char endless[] = "of unknown size";
  std::strstream output(endless, -1, std::ios::in);
  EXPECT_EQ(InMemoryOutput(output).bytes(), endless);
}

TEST(InMemoryOutput, OneThatIsAnnouncedButNotThereIsMissing) {
  struct : OrvTestInfo {
    bool isOutputInMemory(const char*) override { return true; }
    std::strstream* getOutputStream(const char*, bool&) override { return nullptr; }
  } info;
  const TestFolder folder;
  TestFolder::write("m", "");
  TestFolder::write("a", "on disk, which does not count");
  EXPECT_EQ(described(TestEngine(nullptr).comparePair({"m", "a"}, &info)), "missing m a a");
}

}  // namespace
