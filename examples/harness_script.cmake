add_executable(orvdiff_harness_script "${CMAKE_CURRENT_LIST_DIR}/harness_script.cpp")
target_link_libraries(orvdiff_harness_script PRIVATE orvdiff::orvdiff)
orvdiff_warnings(orvdiff_harness_script)
