#include <unicode/uclean.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <list>
#include <new>
#include <thread>

#include "orvdiff/compare/OrvDiffNormalizationPattern.h"
#include "orvdiff/platform/I18N.h"
#include "orvdiff/platform/OrvGlob.h"
#include "orvdiff/platform/OrvHelper.h"
#include "orvdiff/platform/OrvWholeFile.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELFmDir.h"
#include "tests/support/Testing.h"

/// The clock of this program. If it is ahead, a folder seems to have stayed unchanged for long.
static std::time_t s_secondsAhead = 0;

extern "C" std::time_t time(std::time_t*) noexcept {
  const auto now = std::chrono::system_clock::now();
  return std::chrono::system_clock::to_time_t(now) + s_secondsAhead;
}

namespace {

using namespace std::string_literals;

TEST(Paths, SplitJoinAndBasename) {
  // A folder, a name in it, the path of both, and the path's base and extension.
  const char* const kRows[][5] = {{"a/b", "c.xml", "a/b/c.xml", "c", "xml"},
                                  {"", "R.a.xml", "R.a.xml", "R.a", "xml"},
                                  {"/", ".a.xml", "/.a.xml", ".a", "xml"},
                                  {"a", ".profile", "a/.profile", ".profile", ""},
                                  {"a", "R.", "a/R.", "R", ""},
                                  {"a", "R", "a/R", "R", ""}};
  for (const auto& [folder, name, path, base, extension] : kRows) {
    std::string joined = folder, gotFolder = "untouched", gotName, gotBase, gotExtension = "?";
    VELFmDir::joinPath(joined, name);
    VELFmDir::splitPath(path, &gotFolder, &gotName);
    VELFmDir::splitPath(path, nullptr, nullptr);
    OrvHelper::fileBasename(name, gotBase, gotExtension);
    EXPECT_EQ(joined + '|' + gotFolder + '|' + gotName, path + "|"s + folder + '|' + name);
    EXPECT_EQ(gotBase + '|' + gotExtension, base + "|"s + extension);
  }
  std::string slashed = "a/", folder, name = "untouched";
  VELFmDir::splitPath("a/", &folder, &name);
  VELFmDir::joinPath(slashed, "b");
  EXPECT_EQ(folder + '|' + name + '|' + slashed, "a||a/b");
}

TEST(Glob, OnlyTheStarOfTheNamePartIsSpecial) {
  const TestFolder folder;
  for (const char* const name : {"R_2.html", "R.html", "R10.html", "R.htm", "[R]?.html", "r.html",
                                 "a*b/R.html", "\xC3\xA9 'q\".html", "RR.html.html"}) {
    TestFolder::write("M/"s + name, "");
  }
  std::filesystem::create_directory("M/R_folder.html");
  std::filesystem::create_symlink("nowhere", "M/R_dangling.html");
  std::filesystem::create_symlink("loop", "loop");
  const std::string tooLong = std::string(5000, 'x') + "/*";
  const std::tuple<const char*, std::list<std::string>> kRows[] = {
      {"M/R*.html",
       {"M/R.html", "M/R10.html", "M/RR.html.html", "M/R_2.html", "M/R_dangling.html",
        "M/R_folder.html"}},
      {"M/[R]?*.html", {"M/[R]?.html"}},
      {"M/?.html", {}},
      {"M/R*html*html", {"M/RR.html.html"}},
      {"M/a*b/*", {"M/a*b/R.html"}},
      {"M*", {"M"}},
      {"none/*", {}},
      {"loop/*", {}},
      {tooLong.c_str(), {}}};
  for (const auto& [pattern, expected] : kRows) {
    std::list<std::string> files;
    OrvGlob::globFiles(pattern, files);
    EXPECT_EQ(files, expected) << pattern;
  }
  const LimitedTo noDescriptors(RLIMIT_NOFILE, 0);
  std::list<std::string> files;
  EXPECT_THAT(storyOf([&] { OrvGlob::globFiles("M/a*b/*", files); }),
              StartsWith("The folder M/a*b cannot be read: Too many open files"));
}

TEST(Glob, SeesEveryChangeOfAFolder) {
  const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
  const auto expectListed = [](const std::list<std::string>& expected) {
    std::list<std::string> files;
    OrvGlob::globFiles("M/*", files);
    EXPECT_EQ(files, expected);
    std::this_thread::sleep_for(std::chrono::milliseconds(s_secondsAhead));  // the clock ticks
  };
  const TestFolder folder;
  TestFolder::write("M/a", "");
  expectListed({"M/a"});
  TestFolder::write("M/b", "");  // most likely in the same tick of the clock
  expectListed({"M/a", "M/b"});
  s_secondsAhead = 20;  // from here on, listings are kept
  std::filesystem::last_write_time("M", longAgo);
  expectListed({"M/a", "M/b"});
  TestFolder::write("M/c", "");
  std::filesystem::last_write_time("M", longAgo);  // only the change time is another
  expectListed({"M/a", "M/b", "M/c"});
  TestFolder::write("M/d", "");
  expectListed({"M/a", "M/b", "M/c", "M/d"});
  s_secondsAhead = 0;
}

TEST(WholeFile, ReplacesAllOrNothing) {
  const TestFolder folder;
  TestFolder::write("f", "former");
  std::filesystem::permissions("f", std::filesystem::perms::owner_read);
  const std::string temporary = ".orvdiff-" + std::to_string(getpid()) + '-';
  for (int i = 1; i < 100; ++i) {
    TestFolder::write(temporary + std::to_string(i), "of a killed process");
  }
  struct stat former = {};
  stat("f", &former);
  const OrvWholeFile::Pieces endless = [](const auto& take) {
    take("half");
    throw std::bad_alloc();
  };
  EXPECT_EQ(OrvWholeFile::replace("f", endless), std::errc::not_enough_memory);
  EXPECT_EQ(TestFolder::read("f"), "former");
  const OrvWholeFile::Pieces pieces = [](const auto& take) { take("n"), take("ew"); };
  EXPECT_FALSE(OrvWholeFile::replace("f", pieces, &former));
  const LimitedTo fullDisk(RLIMIT_FSIZE, 5000);
  EXPECT_EQ(OrvWholeFile::replace("f", std::string(10000, 'x')), std::errc::file_too_large);
  EXPECT_EQ(TestFolder::read("f") + TestFolder::read(temporary + '1'), "newof a killed process");
  EXPECT_EQ(std::filesystem::status("f").permissions(), std::filesystem::perms::owner_read);
}

TEST(XmlEncode, EveryNameBecomesCharacterData) {
  const std::string kReplaced = "\xEF\xBF\xBD";
  const std::string kRows[][2] = {
      {"a&b<c>d\"e'f", "a&amp;b&lt;c&gt;d&quot;e&apos;f"},
      {"\t\n\r\xC3\xB6\xF0\x9F\x98\x80", "\t\n\r\xC3\xB6\xF0\x9F\x98\x80"},
      {"a\0b\x1F"s, "a" + kReplaced + "b" + kReplaced},
      {"\xE9|\xC3", kReplaced + "|" + kReplaced},
      {"\xEF\xBF\xBF", kReplaced}};
  for (const auto& [text, encoded] : kRows) {
    VELByteBuffer buffer(2, 1);
    OrvHelper::xmlEncode(text.data(), text.size(), buffer);
    EXPECT_EQ(buffer.str(), encoded);
  }
}

TEST(I18N, Utf8TravelsThroughUtf16WithoutLoss) {
  // Proper text, Latin-1, sequences cut off, overlong, surrogates, beyond Unicode, a mark.
  for (const char* const text : {"", "plain", "\xC3\xB6\xF0\x9F\x98\x80\xE2\x80\xA8", "\xE9t\xE9",
                                 "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xC3(\xE2\x82(\xF0\x9F\x98(",
                                 "\xC0\xAF\xE0\x80\xAF", "\xED\xA0\x80\xED\xB0\x80", "\xED\xB2\x80",
                                 "\xF4\x90\x80\x80\xFF\xFE\x80\xBF", "\xEF\xBB\xBFx"}) {
    EXPECT_EQ(I18NString(text).empty(), *text == '\0');
    EXPECT_EQ(I18NString(text).toBytes("utf-8"), text);
  }
  EXPECT_EQ(I18NString("gr\xF6\xDF", "iso-8859-1").toBytes(), "gr\xC3\xB6\xC3\x9F");
  EXPECT_EQ(I18NString(reinterpret_cast<const char*>(u"\u00F6"), "UTF-16").toBytes(), "\xC3\xB6");
  const std::string utf16 = I18NString("a\xC3\xB6").toBytes("utf-16");
  EXPECT_EQ(utf16, std::string(reinterpret_cast<const char*>(u"a\u00F6"), 4));
  EXPECT_EQ(I18NString("ab").toBytes("utf-32").size(), 8U);
  EXPECT_THROW(I18NConverter("no-such-encoding"), VELAssertError);
}

/// ICU's memory; the allocation that the countdown ends at fails.
long s_countdown = 0;

void* resizeForIcu(const void*, void* block, std::size_t size) {
  return --s_countdown == 0 ? nullptr : std::realloc(block, size);
}

TEST(I18N, RunningOutOfMemoryIsNothingElse) {
  I18NConverter("iso-8859-1");  // what ICU loads once is loaded then
  UErrorCode status = U_ZERO_ERROR;
  u_setMemoryFunctions(
      nullptr, [](auto* context, auto size) { return resizeForIcu(context, nullptr, size); },
      resizeForIcu, [](auto*, auto* block) { std::free(block); }, &status);
  s_countdown = 1;
  EXPECT_THROW(I18NConverter("iso-8859-1"), VELOutOfMemoryError);
  for (int failing = 1; failing <= 2; ++failing) {
    s_countdown = failing;  // later ones crash some versions of ICU
    EXPECT_THROW(OrvDiffNormalizationPattern("[0-9]+, which is no short text", nullptr),
                 VELOutOfMemoryError);
  }
}

template <typename Exception>
struct Raises {
  Raises() { throw Exception(); }
};

struct Reraised : VELAssertError {
  Reraised() : VELAssertError("text", "Unit", 7) {}
};

TEST(Creating, EveryErrorBecomesOneOfTheFamilyAndTellsItsWay) {
  const VELPlace here = {"Here", 12};
  EXPECT_THROW(velNew<Raises<std::bad_alloc>>(here), VELOutOfMemoryError);
  EXPECT_THROW(velNew<Raises<std::bad_exception>>(here), VELStdExceptionError);
  EXPECT_EQ(storyOf([&] { velNew<Raises<Reraised>>(here); }),
            "text [Unit:7, VEL_THROW; Here:12, VEL_RETHROW]");
}

}  // namespace
