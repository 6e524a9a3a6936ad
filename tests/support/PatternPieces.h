#pragma once

#include <string_view>

#include "orvdiff/platform/OrvDeployment.h"

/// The pieces of generated texts: what a pattern starts with, contains or stops at, and near
/// misses.
// clang-format off
inline constexpr std::string_view kPieces[] = {
    "<script", ">", "</script>", "name=\"chart", "\"", "name=\"next", "\" id=\"next", "id=\"next",
    "<meta name=\"Copyright\"", "<meta name=\"GeneratorID\"", "<meta name=\"Trademark\"",
    "<meta http-equiv=\"X-UA-Compatible\"", "onclick=\"", "onload=\"", "oncontextmenu=\"", "on",
    "<img src=", "v1/", " ctx=\"", "0:1", " name=\"", "a_Z9", " id=\"PRMT_", " for=\"", "[x]",
    " aria-labelledby=\"", "aria-labelledby=\"_THIS_hdr", "_THIS_hdr7", " _THIS_hdr12", " _THIS_",
    "hiddenspan", "hiddenspan3", " id=\"", " ", "   ", "chart_tmp_", "42", "c", ".removeReference",
    "coords=\"", "<coord>", "</coord>", "<label for=\"", "\">", "=3D", "=3", "=", "/bin/",
    "\\bind/", "<x:Data>", "</x:Data>", "-", "+", ".", "1", "e", "E+", "1e-5", "<filename>",
    "</filename>", "<area", "</area>", "Content-Type: image/png", "\n", "\r", "\r\n", "width:",
    "px", ";", "getAxisValueAsString", "title=\"",
    "http://" ORV_REPORT_NAMESPACE_HOST "/schemas/report/13.", "/", "x", "<", "A", "_", "\t", "\v",
    "\f", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9", "\xC2\xA0", "\xE3\x80\x80", "\xC3\xA9",
    "\xCE\xA9", "\xD9\xA3", "\xCC\x81", "\xE2\x80\x8D", "\xC2\xAD", "\xF0\x9D\x84\x9E",
    "\xEF\xBC\xBF", "\x85", "\xC2", "\xE2\x80", "\xED\xA0\x80", "\xFF", "\xF0\x9F", "\xA8",
};
// clang-format on
