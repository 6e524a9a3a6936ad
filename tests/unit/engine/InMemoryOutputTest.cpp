#include <array>

#include "orvdiff/engine/InMemoryText.h"
#include "orvdiff/platform/OrvTestInfo.h"
#include "tests/support/Testing.h"
#include "tests/unit/engine/TestEngine.h"

namespace {

using namespace std::string_literals;

const std::string kActual = "../webcontent/bi/type/R.pdf";

/// What is on disk by the time of the notification.
struct DiskWitness : OrvDiffListener {
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override {
    onDisk = TestFolder::read(result.getActualName());
  }
  std::string onDisk = "(nobody told)";
};

/// A frozen stream takes no more text once its buffer is full.
void expectUnfrozen(std::strstream& output) {
  output.clear();
  output << std::string(4096, 'x');
  EXPECT_TRUE(output.good());
}

TEST(InMemoryOutput, AFailingOneIsOnDiskBeforeAnyoneIsTold) {
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

/// What an in-memory output is taken for, as text and as bytes.
void expectHeld(std::strstream& output, const std::string& text, std::size_t length) {
  EXPECT_EQ(heldLength(output), length);
  InMemoryText held(output);
  EXPECT_STREQ(held.text(), text.c_str());
  held.unfreeze();
}

TEST(InMemoryOutput, EndsAtItsNulWhereverTheHostStands) {
  std::strstream fresh;
  expectHeld(fresh, "", 0);
  std::strstream patched;
  patched << "<p>0000</p>" << std::ends;
  patched.seekp(3);
  patched << "0042";
  expectHeld(patched, "<p>0042</p>", 7);
  char page[] = "<p>finished</p>\0<p>left over";
  std::strstream finished(page, sizeof page, std::ios::in);
  expectHeld(finished, "<p>finished</p>", sizeof page);
  std::array<char, 32> room = {"<p>"};
  std::strstream appended(room.data(), room.size(), std::ios::out | std::ios::app);
  appended << "more</p>" << std::ends;
  expectHeld(appended, "<p>more</p>", 12);
  char full[] = {'n', 'e', 'v', 'e', 'r', ' ', 'e', 'n', 'd', 'e', 'd'};
  std::strstream unended(full, sizeof full, std::ios::out);
  unended << "NEVER";
  expectHeld(unended, "NEVER", 5);
}

TEST(InMemoryOutput, IsTheHostsAgainAfterAnError) {
  const TestFolder folder;
  TestFolder::write("Masters/R.pdf", "");
  OrvTestInfo info;
  std::strstream& output = info.addOutput(kActual, false);
  output << "text" << std::ends;
  TestEngine engine(
      nullptr, [](const auto& m, const auto& a, auto*) { return new OrvDiffResultFailDiff(m, a); });
  EXPECT_EQ(raisedBy([&] { engine.verifyOutput({}, "R.xml", &info); }),
            "OrvDiffLib: VEL_ASSERT(bFileOpened);");
  expectUnfrozen(output);
  output.str();  // freezes it; its memory is freed all the same
}

TEST(InMemoryOutput, OneThatIsAnnouncedButNotThereIsMissing) {
  struct : OrvTestInfo {
    bool isOutputInMemory(const char*) override { return true; }
    std::strstream* getOutputStream(const char*, bool&) override { return nullptr; }
  } info;
  const TestFolder folder;
  TestFolder::write("Masters/R.pdf", "");
  TestFolder::write(kActual, "on disk, which does not count");
  Recorder recorder;
  TestEngine(nullptr).verifyOutput({&recorder}, "R.xml", &info);
  EXPECT_THAT(recorder.heard,
              testing::ElementsAre("missing Masters/R.pdf " + kActual + " " + kActual));
}

}  // namespace
