# Installs the library, moves the installation, and builds and runs a program against it in both
# ways that users have: find_package and pkg-config. Then has CTest verify a suite with it.
include("${CMAKE_CURRENT_LIST_DIR}/Running.cmake")
set(prefix "${WORK_DIR}/moved here")

run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/installed")
file(RENAME "${WORK_DIR}/installed" "${prefix}")

run("${CMAKE_COMMAND}" -S "${CONSUMER_DIR}" -B "${WORK_DIR}/build" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")

if(EXISTS "${prefix}/bin/orvdiff")
  run("${prefix}/bin/orvdiff" formats)
  # Each of two installations has its own library and manual, whatever becomes of the other one.
  set(other "${WORK_DIR}/other version")
  file(COPY "${prefix}/" DESTINATION "${other}")
  file(GLOB libraries "${other}/${LIB_DIR}/liborvdiff*")
  file(REMOVE ${libraries})
  file(REMOVE_RECURSE "${other}/share/man")
  run("${prefix}/bin/orvdiff" --version)
  run("${prefix}/bin/orvdiff" help)
  if(EXISTS "${prefix}/share/man")
    expect("ORVDIFF(1)")
  endif()
  execute_process(COMMAND "${other}/bin/orvdiff" --version RESULT_VARIABLE status
                  OUTPUT_VARIABLE output ERROR_VARIABLE output)
  expect("liborvdiff.so")  # which it does not find
  # No locale but UTF-8.
  file(WRITE "${WORK_DIR}/Umsätze.html" "<p>1</p>")
  run("${CMAKE_COMMAND}" -E env LC_ALL=C "${prefix}/bin/orvdiff" diff -v html Umsätze.html Umsätze.html)
  expect("passed   Umsätze.html")
  # Below /usr the loader finds the library by itself, and distributions refuse a search path.
  set(ENV{DESTDIR} "${WORK_DIR}/package")
  run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix /usr)
  unset(ENV{DESTDIR})
  run(readelf --dynamic "${WORK_DIR}/package/usr/bin/orvdiff")
  expect(NEEDED)
  expect_not(PATH)
  include("${CMAKE_CURRENT_LIST_DIR}/SuiteTest.cmake")
  include("${CMAKE_CURRENT_LIST_DIR}/FrameworksTest.cmake")
endif()

set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIB_DIR}/pkgconfig")
run(pkg-config --cflags --libs orvdiff)
separate_arguments(flags UNIX_COMMAND "${output}")
run("${CXX}" -std=c++17 "${CONSUMER_DIR}/main.cpp" -o "${WORK_DIR}/consumer" ${flags})
set(ENV{LD_LIBRARY_PATH} "moved here/${LIB_DIR}")
run("${WORK_DIR}/consumer")

# With a broken XML module, XML is trouble, and nothing else is.
file(GLOB modules "${prefix}/${LIB_DIR}/orvdiff/liborvdiff-xml*")
if(NOT EXISTS "${prefix}/bin/orvdiff")
  set(modules)
endif()
foreach(module IN LISTS modules)
  file(WRITE "${WORK_DIR}/a.xml" "<a/>")
  file(WRITE "${module}" "no library")
  run(${CMAKE_COMMAND} -E env "${prefix}/bin/orvdiff" compare html a.xml a.xml)
  execute_process(COMMAND "${prefix}/bin/orvdiff" compare ctx-metadata a.xml a.xml
                  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output
                  WORKING_DIRECTORY "${WORK_DIR}")
  expect("cannot load ${module} (")
  if(NOT status EQUAL 2)
    message(FATAL_ERROR "${status}: ${output}")
  endif()
endforeach()
