# Included by InstallTest.cmake: the examples for test frameworks as they are installed, built and run
# against the installation on the demo suite.
set(examples "${prefix}/share/doc/orvdiff/examples/test_frameworks")
run("${CMAKE_COMMAND}" -S "${examples}" -B "${WORK_DIR}/frameworks" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/frameworks")
file(COPY "${DEMO_DIR}" DESTINATION "${WORK_DIR}/frameworks")
set(work "${WORK_DIR}/frameworks/demo/server/work")
file(COPY "${examples}/pytest/conftest.py" DESTINATION "${work}")

# framework(<expected status> <command>...): from the suite's working folder, with the program in PATH.
macro(framework expected)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E env "PATH=${prefix}/bin:/usr/bin:/bin" ${ARGN}
    WORKING_DIRECTORY "${work}" RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL ${expected})
    message(FATAL_ERROR "${ARGN}: ${status}\n${output}")
  endif()
endmacro()

framework(1 "${WORK_DIR}/frameworks/orvdiff_googletest")
expect(" 3 tests.\n[  SKIPPED ] 3 tests")
expect("v5DebugHTML/BalanceSheet.html:42: Failure")
framework(8 "${WORK_DIR}/frameworks/orvdiff_catch2" --reporter compact)
expect("Failed 1 test case, failed 8 assertions")
execute_process(COMMAND /usr/bin/python3 -c "import pytest" RESULT_VARIABLE status ERROR_QUIET)
if(status EQUAL 0)
  framework(1 /usr/bin/python3 -m pytest -q -p no:cacheprovider --orvdiff-verify=../suite)
  expect("2 failed, 61 passed, 1 skipped, 3 xfailed, 1 warning")
endif()
