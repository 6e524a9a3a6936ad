# Included by InstallTest.cmake: a suite's reports as tests of CTest.
set(suite "${WORK_DIR}/suite source")
file(COPY "${CONSUMER_DIR}/../suite/" "${DEMO_DIR}" DESTINATION "${suite}")
run("${CMAKE_COMMAND}" -S "${suite}" -B "${WORK_DIR}/suite" "-DCMAKE_PREFIX_PATH=${prefix}")

# After configuring: CTest finds reports when it starts.
set(server "${suite}/demo/server")
set(odd "a  b;c [d] ]e[ f\\ $x \${y}")
file(WRITE "${server}/suite/hr/${odd}.xml" "report")
file(WRITE "${server}/suite/hr/Masters/${odd}.html" "same")
file(WRITE "${server}/webcontent/bi/v5DebugHTML/${odd}.html" "same")
file(MAKE_DIRECTORY "${server}/suite/hr/a")

# outcome(<text> <argument>...): what a run of CTest says of each test, sorted.
function(outcome expected)
  execute_process(COMMAND "${CMAKE_CTEST_COMMAND}" --test-dir "${WORK_DIR}/suite" -j 4 ${ARGN}
                  --output-junit "${WORK_DIR}/junit.xml" OUTPUT_QUIET ERROR_QUIET)
  file(READ "${WORK_DIR}/junit.xml" junit)
  string(REPLACE ";" "(semicolon)" junit "${junit}")
  string(REPLACE "[" "(opening)" junit "${junit}")
  string(REPLACE "]" "(closing)" junit "${junit}")
  string(REGEX MATCHALL "<testcase name=\"[^\"]*\"[^>]* status=\"[a-z]+\"" cases "${junit}")
  list(TRANSFORM cases REPLACE "<testcase name=\"([^\"]*)\".* status=\"([a-z]+)\"" "\\2 \\1")
  list(SORT cases)
  list(JOIN cases "\n" actual)
  if(NOT actual STREQUAL expected)
    message(FATAL_ERROR "ctest ${ARGN}:\n${actual}\nexpected:\n${expected}")
  endif()
endfunction()

set(odd "a  b(semicolon)c (opening)d(closing) (closing)e(opening) f\\ $x \${y}")
set(failing "fail all/finance/BalanceSheet.xml
fail all/hr/Headcount.xml
fail nowhere/list")
outcome("disabled all/finance/BudgetVariance.xml
disabled two(semicolon) (opening)formats/Headcount.xml
disabled two(semicolon) (opening)formats/${odd}.xml
${failing}
run all/finance/CashFlow.xml
run all/hr/Absence.xml
run all/hr/${odd}.xml
run all/operations/Deliveries.xml
run all/operations/Deliveries_late.xml
run all/operations/StockLevels.xml
run all/sales/Revenue.xml
run all/sales/StockLevels.xml
run all/sales/TopCustomers.xml
run two(semicolon) (opening)formats/Absence.xml")
outcome("${failing}" --rerun-failed)
