#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "cli/diff/ComparedFile.h"
#include "cli/diff/HunkLines.h"
#include "cli/diff/TextEdits.h"
#include "cli/diff/TextHunks.h"
#include "orvdiff/formats/OrvDiffFormats.h"

namespace {

/// Pages in which rules of the format html join and remove lines, and long lines are cut.
class PageMaker {
 public:
  std::string page(std::size_t pieces) {
    std::string text;
    for (std::size_t i = 0; i < pieces; ++i) {
      text += piece();
    }
    return text;
  }

  /// `page` with some stretches replaced.
  std::string changed(std::string page) {
    for (std::size_t count = pick(5); count > 0; --count) {
      const std::size_t begin = startOfCharacter(page, pick(page.size() + 1));
      const std::size_t end = startOfCharacter(page, std::min(page.size(), begin + pick(9)));
      page = page.substr(0, begin) + (pick(3) == 0 ? this->page(pick(12)) : piece()) +
             page.substr(end);
    }
    return page;
  }

  std::size_t pick(std::size_t below) {
    return std::uniform_int_distribution<std::size_t>(0, below - 1)(m_random);
  }

 private:
  static std::size_t startOfCharacter(const std::string& text, std::size_t place) {
    while (place > 0 && place < text.size() && (text[place] & '\xC0') == '\x80') {
      --place;
    }
    return place;
  }

  const char* piece() {
    static constexpr const char* kPieces[] = {
        "\n",
        "\n",
        "\r\n",
        " ",
        "one ",
        "two",
        "15.20",
        "<p>",
        "<tr><td>",
        "</td></tr>\n",
        "\u00E9",
        "e\u0301",
        " id=\"a1\"",
        " id=\"b2\"",
        "<script>\n1\n</script>\n",
        "<script>2</script>",
        "and so it goes on for a while without any tag or end of the line ",
        "\u8868"};
    return kPieces[pick(std::size(kPieces))];
  }

  std::mt19937 m_random{7};
};

std::string applied(const std::vector<TextEdit>& edits, std::string_view a, std::string_view b) {
  std::string made;
  std::size_t done = 0;
  for (const TextEdit& edit : edits) {
    made += a.substr(done, edit.beginA - done);
    EXPECT_EQ(made.size(), edit.beginB);
    made += b.substr(edit.beginB, edit.endB - edit.beginB);
    done = edit.endA;
  }
  return made.append(a.substr(done));
}

bool splitsCharacter(std::string_view text, std::size_t offset) {
  return offset < text.size() && (text[offset] & '\xC0') == '\x80';
}

/// The text of `file` from the one place to the other.
std::string_view between(const ComparedFile& file, std::size_t begin, std::size_t end) {
  const std::size_t offset = file.offsetOf(begin);
  return file.text().substr(offset, file.offsetOf(end) - offset);
}

TEST(TextDiff, EditsAndHunksLeaveOutOnlyWhatIsEqual) {
  const auto engine = OrvDiffFormats::find("html")->createEngine({});
  PageMaker make;
  for (int round = 0; round < 3000; ++round) {
    const OrvPatternList* const rules = round % 4 == 0 ? nullptr : engine->getCleansingPatterns();
    const std::string master = make.page(make.pick(120));
    const std::string output = make.changed(master);
    const ComparedFile a(master, rules);
    const ComparedFile b(output, rules);
    const std::vector<TextEdit> edits = compareTexts(a.text(), b.text()).edits;
    ASSERT_EQ(applied(edits, a.text(), b.text()), b.text()) << round;
    for (const TextEdit& edit : edits) {
      EXPECT_FALSE(splitsCharacter(a.text(), edit.beginA) || splitsCharacter(a.text(), edit.endA) ||
                   splitsCharacter(b.text(), edit.beginB) || splitsCharacter(b.text(), edit.endB));
    }
    TextHunks hunks(a, b, edits, make.pick(3));
    std::size_t nextEdit = 0;
    std::size_t doneA = 0;
    std::size_t doneB = 0;
    while (const auto hunk = hunks.next()) {
      for (const ChangedLines& lines : hunk->changes) {
        ASSERT_EQ(lines.firstEdit, nextEdit);
        nextEdit += lines.edits.size();
        ASSERT_GE(lines.a.begin, doneA);
        ASSERT_GE(lines.b.begin, doneB);
        ASSERT_EQ(between(a, doneA, lines.a.begin), between(b, doneB, lines.b.begin)) << round;
        doneA = lines.a.end;
        doneB = lines.b.end;
      }
      for (const DiffLine& line : hunkLines(a, b, *hunk, 1)) {
        EXPECT_EQ(line.masterLine == 0 && line.outputLine == 0, false);
      }
    }
    EXPECT_EQ(nextEdit, edits.size());
    ASSERT_EQ(between(a, doneA, master.size()), between(b, doneB, output.size())) << round;
  }
}

TEST(TextDiff, LongLinesAreNotCutInNumbers) {
  std::string a;
  std::string b;
  for (int i = 1000; i < 3000; ++i) {
    const std::string name = "/x" + std::to_string(i * i) + "=7";
    a += name + ",250.00; ";
    b += name + (i % 50 == 0 ? ",260.00; " : ",250.00; ");
  }
  for (const TextEdit& edit : compareTexts(a, b).edits) {
    EXPECT_EQ(a.substr(edit.beginA, edit.endA - edit.beginA), "7,250.00");
  }
}

TEST(TextDiff, WorkAndEditsStayBoundedForAnyText) {
  const std::string blanks(1 << 22, '\n');  // a token each, were they not joined
  const std::string oneWord(1 << 21, 'x');  // no place to cut
  const std::string marks = "a" + std::string(1 << 16, '\xCC') + "\xCC\x81";
  for (const std::string& text : {blanks, oneWord, marks}) {
    const std::string other = "y" + text + "z";
    const TextEdits found = compareTexts(text, other);
    EXPECT_EQ(applied(found.edits, text, other), other);
    EXPECT_LE(found.edits.size(), 2U);
  }
}

}  // namespace
