# Builds the library as an archive with the classes of a host in place of ours, installs it, and
# builds and runs that host against it.
include("${CMAKE_CURRENT_LIST_DIR}/Running.cmake")
set(settings -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${CXX}" -DCMAKE_BUILD_TYPE=Debug
    "-DCMAKE_CXX_FLAGS_DEBUG=-O0" "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}")
set(host "${SOURCE_DIR}/examples/own_host")

run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/orvdiff" ${settings}
    -DBUILD_SHARED_LIBS=OFF "-DORVDIFF_HOST_INCLUDE_DIR=${host}/include"
    -DCMAKE_CXX_FLAGS=-Wno-deprecated)
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/orvdiff")
run("${CMAKE_COMMAND}" --install "${WORK_DIR}/orvdiff" --prefix "${WORK_DIR}/installed")
run("${CMAKE_COMMAND}" -S "${host}" -B "${WORK_DIR}/host" ${settings}
    "-DCMAKE_PREFIX_PATH=${WORK_DIR}/installed")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/host")

file(WRITE "${WORK_DIR}/Masters/R.html" "<p>page</p>")
run("${WORK_DIR}/host/own_host" R.xml "<p>page</p>")
expect("right  ../webcontent/bi/v5DebugHTML/R.html")
expect("ticket 42: VEL_ASSERT(listener); at OrvDiffFileEngine:")
