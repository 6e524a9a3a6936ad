# orvdiff_add_suite(NAME name LOCATION location...
#                   [FORMATS format...] [WORKING_DIRECTORY folder] [OPTIONS option...])
#
# Makes one test per report, which runs `orvdiff verify` on that report alone. The reports are
# looked for whenever CTest starts, so a report that was added or removed needs no new configuring.
# `ctest -j`, `--rerun-failed` and `--output-junit` then work report by report.
#
#   NAME               Tests are called NAME/REPORT, with the report's path below its location (the
#                      path as a whole where there are several locations), and have the label NAME.
#   LOCATION           Reports' own files, or folders to search for reports. Relative to
#                      WORKING_DIRECTORY, as on the command line.
#   FORMATS            Only these formats; default: all that need no further option.
#   WORKING_DIRECTORY  Where the program runs: outputs lie below ../webcontent/bi from there.
#                      Relative to the current source folder, which is also the default.
#   OPTIONS            Further options of `orvdiff verify`, for example --sub-folder fr.
#
# A report that no selected format has a master of gives a disabled test, which CTest lists as not
# run. A pair that two reports' names fit (Revenue and Revenue_2) is compared by the tests of both.
# When the reports cannot be listed, a single test NAME/list fails and says why. So does the test of
# a report whose name holds control characters or is no UTF-8: CMake cannot pass it on.
include_guard(GLOBAL)

set(_orvdiff_list_script "${CMAKE_CURRENT_LIST_DIR}/OrvdiffListSuite.cmake" CACHE INTERNAL "")

function(orvdiff_add_suite)
  cmake_parse_arguments(PARSE_ARGV 0 suite "" "NAME;WORKING_DIRECTORY" "LOCATION;FORMATS;OPTIONS")
  foreach(needed NAME LOCATION)
    if(NOT DEFINED suite_${needed})
      message(FATAL_ERROR "orvdiff_add_suite needs ${needed}")
    endif()
  endforeach()
  if(DEFINED suite_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "orvdiff_add_suite: unknown arguments: ${suite_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT TARGET orvdiff::program)
    message(FATAL_ERROR "orvdiff_add_suite runs the orvdiff program, which was not built with "
                        "this orvdiff (ORVDIFF_BUILD_CLI)")
  endif()
  cmake_path(ABSOLUTE_PATH suite_WORKING_DIRECTORY BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")

  string(MD5 id "${suite_NAME}")
  set(tests "${CMAKE_CURRENT_BINARY_DIR}/orvdiff-suite-${id}.cmake")
  set(content "set(suite_program [==[$<TARGET_FILE:orvdiff::program>]==])\n")
  foreach(setting NAME LOCATION FORMATS OPTIONS WORKING_DIRECTORY)
    string(APPEND content "set(suite_${setting} [==[${suite_${setting}}]==])\n")
  endforeach()
  string(APPEND content "include([==[${_orvdiff_list_script}]==])\n")
  file(GENERATE OUTPUT "${tests}" CONTENT "${content}")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${tests}")
endfunction()
