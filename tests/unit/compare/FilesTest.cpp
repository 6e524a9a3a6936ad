#include <sys/stat.h>

#include <type_traits>

#include "orvdiff/compare/OrvDiffLib.h"
#include "tests/support/Testing.h"

namespace {

using namespace std::string_literals;

static_assert(!std::is_convertible_v<OrvByteBuffer, OrvTextBuffer>, "bytes are not a text");

TEST(FileReading, WholeFilesInBothForms) {
  const TestFolder folder;
  for (const std::string& contents : {""s, "with\0NUL\r\n"s, std::string(100000, 'x')}) {
    TestFolder::write("file", contents);
    OrvFileHandle handle("file", "r");
    EXPECT_EQ(OrvDiffLib::getFileLength(handle), static_cast<int>(contents.size()));
    EXPECT_EQ(std::string(OrvDiffLib::slurpFile(handle).get(), contents.size() + 1),
              contents + '\0');
    OrvByteBuffer buffer;
    unsigned int length = 1;
    EXPECT_TRUE(OrvDiffLib::readFileIntoBuffer("file", buffer, length));
    EXPECT_EQ(std::string(buffer.get(), length), contents);
  }
  TestFolder::write("file", "0123456789");
  OrvFileHandle handle("file", "r");
  std::fseek(handle, 4, SEEK_SET);
  EXPECT_STREQ(OrvDiffLib::slurpFile(handle).get(), "456789");
}

TEST(FileReading, FailuresAreClear) {
  const TestFolder folder;
  TestFolder::write("file", "");
  ASSERT_EQ(mkfifo("pipe", 0600), 0);  // whose other end nobody ever opens
  const char* const kNotOpened[][2] = {{nullptr, "r"}, {"file", nullptr}, {"none", "r"}, {".", "r"},
                                       {".", "w"},     {"pipe", "r"},     {"pipe", "rt"}};
  for (const auto& [path, mode] : kNotOpened) {
    EXPECT_EQ(OrvFileHandle(path, mode), nullptr);
  }
  OrvByteBuffer buffer(OrvDiffLib::strdupnew("before").release());
  unsigned int length = 77;
  EXPECT_FALSE(OrvDiffLib::readFileIntoBuffer("none", buffer, length));
  EXPECT_FALSE(OrvDiffLib::readFileIntoBuffer(".", buffer, length));
  EXPECT_FALSE(OrvDiffLib::readFileIntoBuffer("pipe", buffer, length));
  EXPECT_EQ(buffer.get() + std::to_string(length), "before77");
  EXPECT_EQ(raisedBy([] { OrvDiffLib::strdupnew(nullptr); }), "OrvDiffLib: VEL_ASSERT(in);");
  // A file longer than its size (0 for all of /proc), one not open for reading, and none.
  const std::string kUnreadable =
      "OrvDiffLib: VEL_ASSERT_NAMED(ok, \"Unable to read all of the contents of file \");";
  const std::string kRows[][3] = {{"/proc/self/status", "r", kUnreadable},
                                  {"file", "w", kUnreadable},
                                  {"none", "r", "OrvDiffLib: VEL_ASSERT(fp);"}};
  for (const auto& [path, mode, error] : kRows) {
    OrvFileHandle handle(path.c_str(), mode.c_str());
    EXPECT_EQ(raisedBy([&handle] { OrvDiffLib::slurpFile(handle); }), error);
  }
  EXPECT_FALSE(OrvDiffLib::readFileIntoBuffer("/proc/self/mem", buffer, length));
  EXPECT_FALSE(OrvDiffLib::readFileIntoBuffer("/proc/self/status", buffer, length));
  const LimitedTo noDescriptors(RLIMIT_NOFILE, 0);
  EXPECT_THAT(storyOf([] { OrvFileHandle("file", "r"); }),
              testing::StartsWith("The file file cannot be opened: Too many open files"));
}

/// A stream over a file whose seek number `seeks` fails.
struct FailingSeek {
  OrvFileHandle file;
  int seeks;

  static ssize_t read(void* self, char* buffer, std::size_t size) {
    return static_cast<ssize_t>(fread(buffer, 1, size, static_cast<FailingSeek*>(self)->file));
  }
  static int seek(void* self, off64_t* offset, int whence) {
    auto& stream = *static_cast<FailingSeek*>(self);
    const bool fails = --stream.seeks == 0 || fseek(stream.file, *offset, whence) != 0;
    *offset = ftell(stream.file);
    return fails ? -1 : 0;
  }
};

TEST(FileReading, AFailingSeekNeverMakesAFileLookEmpty) {
  const TestFolder folder;
  TestFolder::write("file", "0123456789");
  int raised = 0;
  for (int failing = 1; failing <= 4; ++failing) {
    FailingSeek stream{OrvFileHandle("file", "r"), failing};
    OrvFileHandle handle(
        fopencookie(&stream, "r", {FailingSeek::read, nullptr, FailingSeek::seek, nullptr}));
    std::string text = "0123456789";
    raised += raisedBy([&] { text = OrvDiffLib::slurpFile(handle).get(); }) == "nothing" ? 0 : 1;
    EXPECT_EQ(text, "0123456789") << failing;
  }
  EXPECT_GE(raised, 2);
}

TEST(EncodedWriting, WritesTheTextAndNothingElse) {
  const TestFolder folder;
  const char* const kRows[][3] = {{"utf-8", "gr\xC3\xB6\r\n\xE9", "gr\xC3\xB6\r\n\xE9"},
                                  {"utf-8", "", "from before"},
                                  {"iso-8859-1", "gr\xC3\xB6", "gr\xF6"}};
  for (const auto& [encoding, text, written] : kRows) {
    TestFolder::write("file", "from before");
    OrvDiffLib::writeEncodedStringToFile("file", encoding, text);
    EXPECT_EQ(TestFolder::read("file"), written);
  }
  OrvDiffLib::writeEncodedStringToFile("new", "utf-8", "");
  const char* const kRefused[][4] = {{nullptr, nullptr, nullptr, "VEL_ASSERT(str);"},
                                     {nullptr, nullptr, "x", "VEL_ASSERT(encoding);"},
                                     {nullptr, "utf-8", "x", "VEL_ASSERT(fname);"},
                                     {"none/f", "utf-8", "x", "VEL_ASSERT(bFileOpened);"},
                                     {".", "utf-8", "x", "VEL_ASSERT(bFileOpened);"}};
  for (const auto& row : kRefused) {
    EXPECT_EQ(raisedBy([&] { OrvDiffLib::writeEncodedStringToFile(row[0], row[1], row[2]); }),
              "OrvDiffLib: "s + row[3]);
  }
  EXPECT_THROW(OrvDiffLib::writeEncodedStringToFile("new", "no-such", "x"), VELAssertError);
  EXPECT_FALSE(std::filesystem::exists("new"));
  OrvDiffLib::writeEncodedStringToFile("/dev/full", "utf-8", "x");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
  std::filesystem::create_symlink("file", "link");
  OrvDiffLib::writeEncodedStringToFile("link", "utf-8", "replaces the link");
  EXPECT_EQ(TestFolder::read("link") + TestFolder::read("file"), "replaces the linkgr\xF6");
}

}  // namespace
