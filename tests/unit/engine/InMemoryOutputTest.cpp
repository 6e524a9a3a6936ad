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

OrvDiffResult* createDiff(const std::string& master, const std::string& actual, std::strstream*) {
  return new OrvDiffResultFailDiff(master, actual);
}

/// A frozen stream takes no more text once its buffer is full.
void expectUnfrozen(std::strstream& output) {
  output.clear();
  output << std::string(4096, 'x');
  EXPECT_TRUE(output.good());
}

TEST(InMemoryOutput, AFailingOneIsOnDiskBeforeAnyoneIsNotified) {
  const struct {
    bool passes;
    bool binary;
    std::string written;
    std::string onDisk;
  } kRows[] = {
      {false, true, "bytes\0\xFF more\r\n"s, "bytes\0\xFF more\r\n"s},
      {false, true, "", ""},
      {false, false, "gr\xC3\xB6\r\n\xE9\0after"s, "gr\xC3\xB6\r\n\xE9"},
      {false, false, "\0after"s, "stale"},
      {true, true, "bytes", "stale"},
  };
  const TestFolder folder;
  TestFolder::write("Masters/R.pdf", "");
  for (const auto& row : kRows) {
    TestFolder::write(kActual, "stale");
    OrvTestInfo info;
    std::strstream& output = info.addOutput(kActual, row.binary);
    EXPECT_EQ(output.pcount(), 0);
    output << row.written;
    TestEngine engine(nullptr, [&](const auto& m, const auto& a, auto* stream) -> OrvDiffResult* {
      EXPECT_EQ(stream, &output);
      stream->ignore(1000000);  // an engine may leave the read position anywhere
      if (row.passes) {
        return new OrvDiffResultPass(m, a);
      }
      return new OrvDiffResultFailDiff(m, a);
    });
    DiskWitness witness;
    engine.verifyOutput({&witness}, "R.xml", &info);
    EXPECT_EQ(witness.onDisk, row.onDisk) << row.written;
    expectUnfrozen(output);
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
  expectUnfrozen(output);
}

TEST(InMemoryOutput, OfAHostThatWrites) {
  const std::string kLong(20, 'x');  // makes a stream take new memory
  const struct {
    std::string written;
    std::streamoff goesBackTo;
    std::string patch;
    std::string text;
    std::string bytes;
  } kRows[] = {
      {"<p>0000</p>\0"s, 3, "0042", "<p>0042</p>", "<p>0042"},
      {"fifteen letters\0"s, 0, "", "fifteen letters", ""},
      {"sixteen letters,", 16, "", "sixteen letters,", "sixteen letters,"},
      {kLong + '\0', 21, "", kLong, kLong + '\0'},
      {kLong + '\0', 2, "", kLong, "xx..."},
      {kLong + '\0', 0, "", kLong, "..."},
      {"\0"s, 0, "", "", ""},
  };
  for (const auto& row : kRows) {
    std::strstream output;
    output << row.written;
    output.seekp(row.goesBackTo);
    output << row.patch;
    const std::strstream::pos_type position = output.tellp();
    { const InMemoryOutput held(output); }
    EXPECT_EQ(output.tellp(), position);
    expectHeld(output, row.text, row.bytes);
  }
  std::strstream fresh;
  EXPECT_EQ(InMemoryOutput(fresh).bytes(), "");
  std::strstream measured;  // by a host that learns what is reserved
  measured << "text\0"s;
  measured.seekg(0, std::ios::end);
  expectHeld(measured, "text", "text\0"s);
  std::strstream gone(std::move(measured));
  EXPECT_STREQ(InMemoryOutput(measured).text(), "");
  EXPECT_EQ(InMemoryOutput(measured).bytes(), "");
}

/// On an array without a byte to spare, so that the address sanitizer sees a byte too many.
TEST(InMemoryOutput, OfAHostThatHasABufferOfItsOwn) {
  const struct {
    std::string buffer;
    int mode;
    std::string written;
    std::string text;
    std::string bytes;
  } kRows[] = {
      {"<p>finished</p>\0<p>left over"s, std::ios::in, "", "<p>finished</p>",
       "<p>finished</p>\0<p>left over"s},
      {"sixteen letters,", std::ios::in, "", "sixteen letters,", "sixteen letters,"},
      {"fifteen letters\0"s, std::ios::in, "", "fifteen letters", "fifteen letters\0"s},
      {"<p>\0        "s, std::ios::out | std::ios::app, "more\0"s, "<p>more", "<p>more\0"s},
      {"<p>\0        "s, std::ios::in | std::ios::app, "", "<p>", "<p>"},
      {"never ended", std::ios::out, "NEVER", "NEVER ended", "NEVER"},
  };
  for (const auto& row : kRows) {
    const std::unique_ptr<char[]> array(new char[row.buffer.size()]);
    row.buffer.copy(array.get(), row.buffer.size());
    const auto mode = static_cast<std::ios::openmode>(row.mode);
    std::strstream output(array.get(), static_cast<int>(row.buffer.size()), mode);
    output << row.written;
    for (int time = 0; time < 2; ++time) {
      InMemoryOutput held(output);
      EXPECT_STREQ(held.text(), row.text.c_str());
      EXPECT_EQ(held.bytes(), row.bytes);
      EXPECT_TRUE(held.isWhole());
    }
  }
  char endless[] = "of unknown size";
  std::strstream output(endless, -1, std::ios::in);
  EXPECT_EQ(InMemoryOutput(output).bytes(), endless);
}

TEST(InMemoryOutput, AnUnwritableFileIsNoReasonNotToNotify) {
  const TestFolder folder;
  TestFolder::write("Masters/R.pdf", "");
  TestEngine engine(nullptr, createDiff);
  for (const bool binary : {true, false}) {
    TestFolder::write(kActual, "stale");
    OrvTestInfo info;
    info.addOutput(kActual, binary) << std::string(10000, 'x') << std::ends;
    DiskWitness witness;
    {
      const LimitedTo fullDisk(RLIMIT_FSIZE, 5000);
      engine.verifyOutput({&witness}, "R.xml", &info);
    }
    EXPECT_EQ(witness.onDisk, "(missing)");
    EXPECT_TRUE(std::filesystem::is_empty("../webcontent/bi/type"));
  }
  std::filesystem::remove("../webcontent/bi/type");
  OrvTestInfo info;
  std::strstream& output = info.addOutput(kActual, false);
  output << "text" << std::ends;
  EXPECT_EQ(raisedBy([&] { engine.verifyOutput({}, "R.xml", &info); }),
            "OrvDiffLib: VEL_ASSERT(bFileOpened);");
  expectUnfrozen(output);
  output.str();  // freezes it; its memory is freed nevertheless
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
