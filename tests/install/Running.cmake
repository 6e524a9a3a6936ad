# run(<command>...): runs it in WORK_DIR and keeps what it prints in `output`; fails with it.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output
                  ERROR_VARIABLE output WORKING_DIRECTORY "${WORK_DIR}")
  if(NOT status EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}: ${status}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# expect(<text>): fails unless the last output contains it; expect_not(<text>): if it does.
macro(expect text)
  string(FIND "${output}" "${text}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "expected ${text} in\n${output}")
  endif()
endmacro()

macro(expect_not text)
  string(FIND "${output}" "${text}" at)
  if(NOT at EQUAL -1)
    message(FATAL_ERROR "${text} in\n${output}")
  endif()
endmacro()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
