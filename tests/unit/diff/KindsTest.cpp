#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "cli/custom/FormatList.h"
#include "cli/custom/PictureComparison.h"
#include "cli/diff/PairDiff.h"
#include "tests/support/Testing.h"

namespace {

/// What `differenceOf` says of two files with these contents: notes, then hunks, in which changed
/// text stands in braces.
std::string describe(const std::string& formatName, const std::string& master,
                     const std::string& output, Verdict verdict = Verdict::Differs,
                     const std::string& printed = {}) {
  const OrvDiffFormat& format = *FormatList::find(formatName);
  const auto engine = FormatList::createEngine(format, {});
  TestFolder::write("m", master);
  TestFolder::write("o", output);
  PairRecord record;
  record.master = "m";
  record.output = verdict == Verdict::Missing ? output : "o";
  record.verdict = verdict;
  record.printed = printed;
  const auto difference = differenceOf(format, *engine, record, {20, 0, 2});
  std::string text;
  for (const std::string& note : difference->notes) {
    text += "(" + note + ") ";
  }
  for (const DiffHunk& hunk : difference->hunks) {
    text += '[' + hunk.place + "] ";
    for (const DiffLine& line : hunk.lines) {
      text += line.kind == DiffLine::Kind::Removed ? "-"
              : line.kind == DiffLine::Kind::Added ? "+"
                                                   : "";
      for (const DiffSpan& span : line.spans) {
        text += span.kind == DiffSpan::Kind::Changed ? '{' + span.text + '}' : span.text;
      }
      text += ' ';
    }
  }
  return text;
}

std::string bigEndian(std::uint32_t number) {
  return {static_cast<char>(number >> 24), static_cast<char>(number >> 16),
          static_cast<char>(number >> 8), static_cast<char>(number)};
}

std::string chunk(const std::string& typeAndData) {
  const auto* const bytes = reinterpret_cast<const Bytef*>(typeAndData.data());
  const auto crc = crc32(0, bytes, static_cast<uInt>(typeAndData.size()));
  return bigEndian(static_cast<std::uint32_t>(typeAndData.size() - 4)) + typeAndData +
         bigEndian(static_cast<std::uint32_t>(crc));
}

/// A grey picture of 8 bits: `pixels` has its rows. What it declares may be something else.
std::string png(std::uint32_t width, std::uint32_t height, const std::vector<std::string>& pixels,
                const std::string& more = {}) {
  std::string raw;
  for (const std::string& row : pixels) {
    raw += '\0' + row;
  }
  uLongf size = compressBound(raw.size());
  std::string packed(size, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &size,
           reinterpret_cast<const Bytef*>(raw.data()), raw.size());
  packed.resize(size);
  const std::string kind("\x08\0\0\0\0", 5);
  return "\x89PNG\r\n\x1A\n" + chunk("IHDR" + bigEndian(width) + bigEndian(height) + kind) + more +
         chunk("IDAT" + packed) + chunk("IEND");
}

struct Row {
  const char* format;
  std::string master;
  std::string output;
  const char* expected;  ///< or only how it starts
};

void expectAll(const std::vector<Row>& rows) {
  const TestFolder folder;
  for (const Row& row : rows) {
    EXPECT_THAT(describe(row.format, row.master, row.output), StartsWith(row.expected))
        << row.master << " -> " << row.output;
  }
}

TEST(Kinds, Tables) {
  const std::string base = "Id,Name,Price\n1,A,5\n2,B,6\n3,C,7\n4,D,8\n";
  expectAll({
      {"csv", base, "Id,Name,Price\n0,New,1\n1,A,5\n2,B,6\n3,C,7\n4,D,8\n",
       "[row 2, only in the output] +{0,New,1} "},
      {"csv", base, "Id,Name,Price\n1,A,5\n2,B,6.50\n3,C,7\n4,D,8\n",
       "[row 3, Price] -{6} +{6.50} "},
      {"csv", base, "Id,Name,Price\n2,B,6\n3,C,7\n4,D,8\n1,A,5\n",
       "[row 2 moved to row 5] -1,A,5 +1,A,5 "},
      {"csv", base, "Id,Name,Price\n4,D,8\n3,C,7\n2,B,6\n1,A,5\n",
       "(3 rows are in another place; the rows are the same, in another order) "},
      {"csv", base, "Id,Name,Price\n2,B,6\n3,C,7\n4,D,8\n1,A,9\n",
       "[row 2 (5 in the output), Price] -{5} +{9} "},
      {"csv", base, "Id,Price,Name\n1,5,A\n2,6,B\n3,7,C\n4,8,X\n",
       "(columns are in another order) [order of columns] -Id, {Name, Price} +Id, {Price, Name} "
       "[row 5, Name] -{D} +{X} "},
      {"csv", "Id,Name\n1,A\n2,B\n", "Id,New,Name\n1,x,A\n2,y,B\n",
       "[column 2, only in the output] +{New} "},
      {"csv", "Id,Name\n1,A\n2,B\n", "Id,Name\n1,A,9\n2\n",
       "[row 2, column 3 (no such cell in the master)] +{9} "
       "[row 3, Name (no such cell in the output)] -{B} "},
      {"csv", "A;\"x\ny \"\"q\"\"\"\n1;2\n", "A;\"x\nz \"\"q\"\"\"\n1;2\n",
       "[row 1, column 2] -x\n{y} \"q\" +x\n{z} \"q\" "},
      {"csv", base, "\"Id\",Name,Price\r\n1,A,5\n2,B,6\n3,C,7\n4,D,8\n",
       "(the same cells; only quotes, separators, line ends or a byte-order mark differ) ["},
      {"csv", "a,\"b\n1,2\n", "a,\"c\n1,2\n",
       "(the master has a quote that is not closed; its quotes were taken as they are) "},
      {"csv", std::string("a,b\0c", 5), std::string("\"a\",b\0c", 7),
       "(the same cells; only quotes, separators, line ends or a byte-order mark differ) (5 "
       "bytes "},
  });
}

/// A changed value in every row and one row more: what a table without alignment shows as all new.
TEST(Kinds, LongTablesAreAlignedByTheirKey) {
  const TestFolder folder;
  std::string master = "Id;Name;Date\n";
  std::string output = master + "0;New;2\n";
  for (int row = 1; row < 1000; ++row) {
    const std::string start = std::to_string(row) + ";Name " + std::to_string(row);
    master += start + ";1\n";
    output += row == 500 ? "" : start + ";2\n";
  }
  EXPECT_THAT(describe("csv", master, output),
              StartsWith("[row 2, only in the output] +{0;New;2} "
                         "[row 2 (3 in the output), Date] -{1} +{2} "));
}

TEST(Kinds, Json) {
  const std::string deep(10'000, '[');
  const std::string deepEnd(10'000, ']');
  expectAll({
      {"json", R"({"rows":[{"id":1,"total":5},{"id":2,"total":6}]})",
       R"({"rows":[{"id":0,"total":1},{"id":1,"total":5},{"id":2,"total":7}]})",
       R"([$.rows[0], only in the output] +{{"id":0,"total":1}} [$.rows[1].total] -{6} +{7} )"},
      {"json", R"({"a b":[1,2,3],"c":null})", R"({"a b":[3,1,2],"d":[ ]})",
       R"([$["a b"][2], moved to [0]] -3 +3 [$.c, only in the master] -{null} )"
       R"([$.d, only in the output] +{[]} )"},
      {"json", "[12345678901234567890123, 1.10, -0]", "[12345678901234567890124, 1.1, 0]",
       "[$[0]] -{12345678901234567890123} +{12345678901234567890124} [$[1]] -{1.10} +{1.1} "
       "[$[2]] -{-}0 +0 "},
      {"json", R"({"a":1,"b":"x"})", R"({"b":"x","a":1})",
       "(the same values; only the order of members differs) ["},
      {"json", R"({"a":1,"b":"x"})", R"({"a": 1,"b":"\u0078"})",
       "(the same values; only spacing or the spelling of strings differs) ["},
      {"json", R"({"a":1,"a":2})", R"({"a":1,"a":3})",
       R"((the master has an object with two members named "a", in line 1) )"
       R"((the output has an object with two members named "a", in line 1) [$.a] -{2} +{3} )"},
      {"json", "[1]", "[1",
       "(the output cannot be read as JSON: parse error at line 1, column 3: "},
      {"json", deep + '1' + deepEnd, deep + '2' + deepEnd,
       "[$ ... 9,980 more levels ... [0][0][0][0][0][0][0][0][0][0][0][0][0][0][0][0][0][0][0][0]] "
       "-{1} +{2} "},
  });
}

TEST(Kinds, Pictures) {
  const std::string base = png(3, 2, {"aaa", "aaa"});
  expectAll({
      {"html-png", base, png(3, 2, {"aab", "acc"}),
       "(3 of 6 pixels differ (50%), by up to 2 of 255, 1.667 on average) "
       "[2 x 2 pixels at 1,0] -{#616161} at 2,0, the first of them +{#626262} at 2,0, the first of "
       "them "},
      {"html-png", base, png(3, 2, {"aaa", "aaa"}, chunk("tEXtTitle")),
       "(same pixels, other bytes) ("},
      {"html-png", base, png(4, 2, {"aaaa", "aaaa"}),
       "(in the 3 x 2 they share, all pixels are equal) [size] -{3} x 2 pixels +{4} x 2 pixels "},
      {"html-png", base, png(3, 2, {"aaa"}),
       "(the output is a damaged PNG: Not enough image data, in row 2 of 2) "
       "(in the rows before that, all pixels are equal) ("},
      {"html-png", base, png(30'000, 30'000, {"aaa"}),
       "(the output declares 30,000 x 30,000 pixels, too many to decode) [size] "},
      {"html-png", base, "GIF89a, no PNG", "(the output is not a readable PNG: Not a PNG file) ("},
      {"html-png", base, "", "(the output is empty) ("},
  });
}

TEST(Kinds, OwnPictures) {
  const TestFolder folder;
  const PictureRules rules = {25, 2};  // "a" and "c" are two steps apart
  const std::string base = png(2, 2, {"aa", "aa"});
  const std::pair<std::string, const char*> rows[] = {
      {png(2, 2, {"aa", "ac"}), "allowed distance of pixels"},
      {png(2, 2, {"az", "ac"}), "allowed share of pixels, allowed distance of pixels"},
      {png(2, 2, {"aa", "aa"}, chunk("tEXtTitle")), "the same pixels in other bytes"},
      {png(2, 2, {"az", "za"}), "differs"},
      {png(2, 2, {"ad", "da"}), "differs"},
      {png(1, 4, {"a", "a", "a", "a"}), "differs"},
      {png(2, 2, {"aa"}), "is a damaged PNG"},
      {"GIF89a", "is not a readable PNG"}};
  for (const auto& [output, expected] : rows) {
    const ContentOutcome outcome = comparePictures(base, output, rules);
    std::string found = outcome.problem;
    for (const std::string& rule : outcome.rules) {
      found += (found.empty() ? "" : ", ") + rule;
    }
    const bool isPass = outcome.verdict == ContentOutcome::Verdict::Equal;
    EXPECT_EQ(isPass, !outcome.rules.empty());
    EXPECT_THAT(found.empty() ? "differs" : found, StartsWith(expected));
  }
  FormatList::setOwn({{"charts", "Charts", "", "*.png", rules, {}}});
  EXPECT_EQ(describe("charts", base, png(2, 2, {"zz", "ac"})),
            "(2 of 4 pixels differ (50%), by up to 25 of 255, 25 on average) "
            "(allowed: 25% of all pixels) "
            "(1 pixel more within the allowed distance of 2) "
            "[2 x 1 pixels at 0,0] -{#616161} at 0,0, the first of them "
            "+{#7a7a7a} at 0,0, the first of them ");
}

TEST(Kinds, Statistics) {
  const auto report = [](const char* objects, const char* pageOuts, const char* referenced) {
    return std::string(
               "r\n\nMapping Mode - d\n\nMapping Statistics - Virtual Objects "
               "(Current/Max/Cumulative): 1/2/") +
           objects + "\nPaging Statistics - Page Outs: " + pageOuts +
           "\nTotal Objects with reference count > 0 : " + referenced + '\n';
  };
  expectAll({
      {"vmd", report("100", "6", "7"), report("125", "5", "7"),
       "(page-outs: 1 fewer than in the master, within the allowance of 2) [cumulative virtual "
       "objects: 25 more, 5 over the allowance of 20] -{100} +{125} "},
      {"vmd", report("100", "6", "7"), report("100", "6", "8"),
       "[objects with a reference count above 0: 1 more, must be equal] -{7} +{8} "},
      {"vmd", report("100", "6", "7"), "r\n\nMode\n",
       "(line 3 of the output is not what a VMD report has there; statistics were not compared) "
       "[line 3] -{Mapping Mode - d} +{Mode} "},
  });
}

TEST(Kinds, WhatIsKnownWithoutComparing) {
  const TestFolder folder;
  const std::string block =
      "+++\nSchema validation error for file: o\nSchema validation error message: expected end of "
      "tag 'c'\nSchema validation error at line 2\nSchema validation error at column number "
      "7\n+++\n";
  EXPECT_EQ(describe("ctx-metadata", "", "<a>\n<c>\xC3\xA4</d>\n", Verdict::Failed, block),
            "(expected end of tag 'c') [line 2, column 7] <a> +<c>\xC3\xA4</{d}> ");
  EXPECT_EQ(describe("ctx-metadata", "", "<a>\n<c>", Verdict::Failed, block),
            "(expected end of tag 'c') [line 2, column 7] <a> +<c{>} ");
  EXPECT_EQ(describe("pdf", "", "", Verdict::Differs, "page 1\nother\n"),
            "[printed by the comparison script] page 1 other ");
  for (const char* const name : {"out/Sales_1.csv", "out/revenue.CSV", "out/Sales_3.csv"}) {
    TestFolder::write(name, "");
  }
  std::filesystem::create_symlink("nowhere", "out/dangling");
  const std::pair<const char*, const char*> kMissing[] = {
      {"out/Sales_2.csv", "[similar names in out: Sales_1.csv, Sales_3.csv] "},
      {"out/Revenue.csv", "[revenue.CSV in out differs only in case] "},
      {"ouT/x/Revenue.csv",
       "(the folder ouT does not exist) [out in the working folder differs only in case] "},
      {"out/dangling", "[no name in out is like it] "},
      {"out/x.html", "[no name in out is like it] "}};
  for (const auto& [name, expected] : kMissing) {
    EXPECT_EQ(describe("csv", "", name, Verdict::Missing), expected);
  }
}

/// Damage must end in a sentence; with sanitizers, this is where it would show.
TEST(Kinds, DamagedFilesAreToldOf) {
  const TestFolder folder;
  const std::string picture =
      png(40, 3, {std::string(40, 'a'), std::string(40, 'b'), std::string(40, 'c')});
  const std::string bases[] = {picture, R"({"a":[1,2,{"b":"c"}],"d":null})", "a,\"b\"\n1,2\n"};
  const char* const formats[] = {"html-png", "json", "csv", "own-png", "own-json", "own-csv"};
  FormatList::setOwn({{"own-png", "Own", "", "*", PictureRules{}, {}},
                      {"own-json", "Own", "", "*", JsonRules{{}, {"$.a"}, {1, 0}}, {}},
                      {"own-csv", "Own", "", "*", CsvRules{',', true, {}, {"a"}, {1, 0}, {}}, {}}});
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    const std::size_t kind = static_cast<std::size_t>(round) % std::size(bases);
    const std::size_t format = static_cast<std::size_t>(round) % std::size(formats);
    std::string damaged = bases[kind];
    for (int i = 0; i < 3; ++i) {
      damaged[random() % damaged.size()] = static_cast<char>(random());
    }
    damaged.resize(round % 2 == 0 ? damaged.size() : random() % damaged.size());
    if (damaged != bases[kind]) {
      EXPECT_NE(describe(formats[format], bases[kind], damaged), "") << round;
    }
  }
}

}  // namespace
