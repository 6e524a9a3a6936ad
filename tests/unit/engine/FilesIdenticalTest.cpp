#include <sstream>

#include "tests/support/Testing.h"
#include "tests/unit/engine/TestEngine.h"

namespace {

using namespace std::string_literals;

/// Compares twice, as an engine and its host may; the host has read the stream to its end.
void expectInMemory(std::iostream& stream, const std::string& actual, const char* expected) {
  stream << actual;
  for (int time = 0; time < 2; ++time) {
    stream.ignore(1000000);
    EXPECT_EQ(described(TestEngine::areFilesIdentical("m", "a", &stream)), expected) << actual;
    EXPECT_TRUE(stream.good());  // not at its end, so the host can read it again
  }
}

TEST(FilesIdentical, OnDiskAndInMemory) {
  const std::string kLong(200000, 'x');
  const std::string k16(16, 'x');  // what a stream first reserves
  const std::tuple<std::string, std::string, const char*> kRows[] = {
      {"", "", "pass m a"},           {"", "a", "diff m a"},
      {"abc", "ab", "diff m a"},      {"ab", "abc", "diff m a"},
      {"a\0b"s, "a\0c"s, "diff m a"}, {"a\r\n", "a\n", "diff m a"},
      {"", k16, "diff m a"},          {k16, k16, "pass m a"},
      {kLong, kLong, "pass m a"},     {kLong + "y", kLong + "z", "diff m a"},
  };
  const TestFolder folder;
  TestFolder::write("m", "xx");
  std::strstream rewritten;  // goes on behind its put position, so it is not that short
  rewritten << std::string(20, 'x');
  rewritten.seekp(2);
  EXPECT_EQ(described(TestEngine::areFilesIdentical("m", "a", &rewritten)), "diff m a");
  TestEngine engine(nullptr, [](const auto& m, const auto& a, auto* stream) {
    return TestEngine::areFilesIdentical(m, a, stream);
  });
  for (const auto& [master, actual, expected] : kRows) {
    EXPECT_EQ(compared(engine, master, actual), expected);
    std::filesystem::remove("a");
    std::strstream output;  // what engines are given
    expectInMemory(output, actual, expected);
    std::stringstream stream;
    expectInMemory(stream, actual, expected);
  }
}

TEST(FilesIdentical, ReportsWhatCannotBeRead) {
  const TestFolder folder;
  TestFolder::write("file", "");
  struct : std::streambuf {
  } unseekable;
  std::iostream stream(&unseekable);
  EXPECT_EQ(described(TestEngine::areFilesIdentical("file", "a", &stream)), "diff file a");
  const char* const kLonger = "/proc/version";  // than its size, which is 0
  EXPECT_EQ(described(TestEngine::areFilesIdentical(kLonger, "file", nullptr)),
            "diff "s + kLonger + " file");
  std::filesystem::create_symlink("nowhere", "dangling");
  const char* const kOpensOnly = "/proc/self/mem";  // every read of it fails
  const char* const kRows[][3] = {{"none", "none2", "none"},
                                  {"file", "none", "none"},
                                  {".", "file", "."},
                                  {"dangling", "file", "dangling"},
                                  {kOpensOnly, "file", kOpensOnly},
                                  {"file", kOpensOnly, kOpensOnly}};
  for (const auto& [master, actual, missing] : kRows) {
    EXPECT_EQ(described(TestEngine::areFilesIdentical(master, actual, nullptr)),
              "missing "s + master + " " + actual + " " + missing);
  }
  std::strstream empty;
  EXPECT_EQ(described(TestEngine::areFilesIdentical(kOpensOnly, "a", &empty)),
            "missing "s + kOpensOnly + " a " + kOpensOnly);
  const LimitedTo noDescriptors(RLIMIT_NOFILE, 0);
  EXPECT_THAT(storyOf([] { TestEngine::areFilesIdentical("file", "file", nullptr); }),
              StartsWith("The file file cannot be opened: Too many open files"));
}

}  // namespace
