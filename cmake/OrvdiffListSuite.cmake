# Run by CTest when it starts: adds one test per report of a suite. The files that
# orvdiff_add_suite writes set suite_NAME, suite_program and so on, and include this one.
cmake_minimum_required(VERSION 3.25)

# Names pass through CMake lists, where a semicolon separates, a bracket joins, and a backslash
# escapes. While they do, control characters stand for these four: the program never prints any.
string(ASCII 1 suite_semicolon)
string(ASCII 2 suite_opening)
string(ASCII 3 suite_closing)
string(ASCII 4 suite_backslash)

macro(_orvdiff_to_list_item text)
  string(REPLACE ";" "${suite_semicolon}" ${text} "${${text}}")
  string(REPLACE "[" "${suite_opening}" ${text} "${${text}}")
  string(REPLACE "]" "${suite_closing}" ${text} "${${text}}")
  string(REPLACE "\\" "${suite_backslash}" ${text} "${${text}}")
endmacro()

# What the program escaped (control characters, for example) stays escaped, except the backslash. A
# report of such a name gets a test that fails, because there is no file of the name it is given.
macro(_orvdiff_from_list_item text)
  string(REPLACE "${suite_semicolon}" ";" ${text} "${${text}}")
  string(REPLACE "${suite_opening}" "[" ${text} "${${text}}")
  string(REPLACE "${suite_closing}" "]" ${text} "${${text}}")
  string(REPLACE "${suite_backslash}${suite_backslash}" "\\" ${text} "${${text}}")
  string(REPLACE "${suite_backslash}" "\\" ${text} "${${text}}")
endmacro()

# The report that a line "REPORT  FORMAT  MASTER -> OUTPUT" is of. Names may hold double blanks: it
# is the first part of the line that is a file.
function(_orvdiff_report_of line result)
  set(rest "${line}")
  set(report "")
  while(TRUE)
    string(FIND "${rest}" "  " end)
    if(end EQUAL -1)
      break()
    endif()
    string(SUBSTRING "${rest}" 0 ${end} part)
    string(APPEND report "${part}")
    set(candidate "${report}")
    _orvdiff_from_list_item(candidate)
    cmake_path(ABSOLUTE_PATH candidate BASE_DIRECTORY "${suite_WORKING_DIRECTORY}"
               OUTPUT_VARIABLE path)
    if(EXISTS "${path}" AND NOT IS_DIRECTORY "${path}")
      break()
    endif()
    string(APPEND report "  ")
    math(EXPR end "${end} + 2")
    string(SUBSTRING "${rest}" ${end} -1 rest)
  endwhile()
  if(end EQUAL -1)  # a name that is shown with escapes
    string(FIND "${line}" "  " end)
    string(SUBSTRING "${line}" 0 ${end} report)
  endif()
  set(${result} "${report}" PARENT_SCOPE)
endfunction()

# How the report is called: short below a single location.
function(_orvdiff_short_name report result)
  list(LENGTH suite_LOCATION locations)
  string(REGEX REPLACE "/+$" "" location "${suite_LOCATION}")
  string(LENGTH "${location}/" length)
  string(FIND "${report}" "${location}/" place)
  if(locations EQUAL 1 AND place EQUAL 0)
    string(SUBSTRING "${report}" ${length} -1 report)
  endif()
  set(${result} "${report}" PARENT_SCOPE)
endfunction()

function(_orvdiff_add_report report isVerified)
  _orvdiff_from_list_item(report)
  _orvdiff_short_name("${report}" name)
  add_test("${suite_NAME}/${name}" "${suite_program}" verify -j 1 --color never ${suite_options}
           -- "${report}")
  set_tests_properties("${suite_NAME}/${name}" PROPERTIES
    WORKING_DIRECTORY "${suite_WORKING_DIRECTORY}" LABELS "${suite_NAME}")
  if(NOT isVerified)
    set_tests_properties("${suite_NAME}/${name}" PROPERTIES DISABLED TRUE)
  endif()
endfunction()

# A test that fails as listing did.
function(_orvdiff_add_failure)
  add_test("${suite_NAME}/list" ${ARGV})
  set_tests_properties("${suite_NAME}/list" PROPERTIES
    WORKING_DIRECTORY "${suite_WORKING_DIRECTORY}" LABELS "${suite_NAME}")
endfunction()

function(_orvdiff_add_reports output)
  _orvdiff_to_list_item(output)
  string(REGEX REPLACE "\n$" "" output "${output}")
  string(REPLACE "\n" ";" lines "${output}")
  list(POP_BACK lines closing)
  set(previous "\n")
  set(count 0)
  foreach(line IN LISTS lines)
    string(FIND "${line}" "${previous}  " place)
    if(NOT place EQUAL 0)
      _orvdiff_report_of("${line}" previous)
      math(EXPR count "${count} + 1")
      set(isVerified TRUE)
      if(line STREQUAL "${previous}  not verified: no selected format has a master")
        set(isVerified FALSE)
      endif()
      _orvdiff_add_report("${previous}" ${isVerified})
    endif()
  endforeach()
  string(REGEX MATCH "^[0-9]+" expected "${closing}")
  if(NOT count EQUAL expected)  # nothing may be lost in silence
    _orvdiff_add_failure("${CMAKE_COMMAND}" -E false
      "found ${count} reports in the list of ${expected}")
  endif()
endfunction()

set(suite_options ${suite_OPTIONS})
foreach(format IN LISTS suite_FORMATS)
  list(APPEND suite_options -f "${format}")
endforeach()
set(suite_command "${suite_program}" verify --list ${suite_options} -- ${suite_LOCATION})
execute_process(COMMAND ${suite_command} WORKING_DIRECTORY "${suite_WORKING_DIRECTORY}"
  RESULT_VARIABLE suite_status OUTPUT_VARIABLE suite_output ERROR_QUIET)
if(suite_status EQUAL 0)
  _orvdiff_add_reports("${suite_output}")
else()
  _orvdiff_add_failure(${suite_command})
endif()
