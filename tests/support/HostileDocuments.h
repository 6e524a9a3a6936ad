#pragma once

#include <string>

/// Documents on which a backtracking search takes time quadratic in their length, or worse.
struct HostileDocument {
  const char* name;
  const char* start;
  const char* repeated;
  const char* end;

  std::string build(std::size_t repetitions) const {
    std::string text = start;
    for (std::size_t i = 0; i < repetitions; ++i) {
      text += repeated;
    }
    return text + end;
  }
};

// clang-format off
inline constexpr HostileDocument kHostileDocuments[] = {
    {"<script, unclosed", "", "<script", ""}, {"quotes", "", "\"", ""}, {"blanks", "", " ", "x"},
    {"<img src= on one line, no v1/", "", "<img src=", ""},
    {"onclick=, unclosed", "", "onclick=", ""},
    {"aria-labelledby with n headers", " aria-labelledby=\"_THIS_hdr1", " _THIS_hdr22", "!"},
    {"n aria-labelledby, unclosed", "", " aria-labelledby=\"_THIS_hdr1 _THIS_hdr2", ""},
    {"blanks before each id", "", "    id=\"a b", ""}, {"digits", "", "7", ""},
    {"digits, no exponent", "", "1234567.", "e"}, {"<area, unclosed", "", "<area", ""},
    {"quotes after a chart name", "chart_tmp_", "\"x", ""},
    {"<area>, no end tag", "", "<area>", ""},
    {"one long line", "", "abc def ", "getAxisValueAsString"},
    {"many lines", "", "getAxisValueAsStrin\n", ""}, {"carriage returns", "", "\r", ""},
    {"<meta name=\"Copyright\", unclosed", "", "<meta name=\"Copyright\"", ""},
    {"name=\"next, no id", "", " name=\"next\"", ""},
    {"name=\"next id=\"next, unclosed", "", " name=\"next\" id=\"next", ""},
    {"<coord>, unclosed", "", "<coord><filename><x:Data>", ""},
    {"c and digits", "", "c123", ".removeReference"},
    {"line ends of two bytes", "", "\xC2\x85x", ""}};
// clang-format on
