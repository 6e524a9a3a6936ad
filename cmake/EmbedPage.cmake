# Puts the HTML report's page into a C++ source: cmake -D SOURCE_DIR=… -D OUTPUT=… -P EmbedPage.cmake
#
# The modules become one script, in which each stands behind those that it imports from. All share
# one scope there, so that names of modules must differ; a browser refuses the script otherwise.

set(modules text dom data query verdicts commands decisions decide hunks overview groups table pictures
  pair keys main)

set(script "")
foreach(module IN LISTS modules)
  file(READ "${SOURCE_DIR}/${module}.js" text)
  string(REGEX REPLACE "(^|\n)import [^;]*;" "\\1" text "${text}")
  string(REGEX REPLACE "(^|\n)export " "\\1" text "${text}")
  string(REGEX REPLACE "\n[ ]*//[^\n]*" "" text "\n${text}")
  string(APPEND script "${text}")
endforeach()
set(script "\"use strict\";\n(() => {${script}})();\n")
string(SHA256 script_hash "${script}")

file(READ "${SOURCE_DIR}/style.css" style)
string(SHA256 style_hash "${style}")
file(READ "${SOURCE_DIR}/page.html" page)

file(CONFIGURE OUTPUT "${OUTPUT}" @ONLY CONTENT [=[
#include "cli/report/PageSource.h"

const PageSource kPageSource = {
    R"page(@page@)page",
    R"page(@style@)page",
    "@style_hash@",
    R"page(@script@)page",
    "@script_hash@",
};
]=])
