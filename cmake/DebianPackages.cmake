# Three Debian packages by CPack: the program, the library, and what programs are built against the
# library with. `./dev package` builds them; tools/try_packages tries them in a fresh system.
#
# The same commit gives the same bytes wherever it is built: SOURCE_DATE_EPOCH dates every file, and
# `./dev package` has the compiler leave the build's folders out of what it writes.

set(ORVDIFF_PACKAGE_CONTACT "orvdiff developers <orvdiff@packages.orv.example>" CACHE STRING
    "Maintainer that the Debian packages name")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvdiff)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has a summary of its own
set(CPACK_PACKAGE_CONTACT "${ORVDIFF_PACKAGE_CONTACT}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program library development)
get_cmake_property(components COMPONENTS)
list(REMOVE_ITEM components ${CPACK_COMPONENTS_ALL})
if(components)
  message(FATAL_ERROR "What is installed for ${components} is in no package: give each install() "
                      "one of the components ${CPACK_COMPONENTS_ALL}")
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE orvdiff)
set(CPACK_DEBIAN_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_STRIP_FILES ON)

# What a package depends on is what its programs and libraries were linked with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_PROGRAM_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)

set(about "orvdiff finds the stored masters of reports, pairs each with the output of
the same name, and compares the two by the rules of their format: byte for
byte, as text with the volatile parts removed, as validated XML, by
statistics, or with a script.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME orvdiff)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "verify report outputs against stored masters
${about}
.
This package contains the program, its manual, completion for the shells bash,
zsh and fish, and a demo suite.")
# `python` runs comparison scripts; the ones among the examples, and reports, call poppler.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS "python-is-python3, poppler-utils, man-db")

set(library_package "liborvdiff${ORVDIFF_SOVERSION}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "${library_package}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "library that verifies report outputs against stored masters
${about}
.
This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborvdiff-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS orvdiff)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "headers and CMake files of liborvdiff
${about}
.
This package contains what programs that use the library are built with, for
CMake and pkg-config, and the CMake function that turns the reports of a suite
into tests. That function needs the package orvdiff.")

# The papers that every package has. Dates are those of the commit.
string(TIMESTAMP package_year "%Y" UTC)
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(papers "${PROJECT_BINARY_DIR}/debian")
configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/copyright.in" "${papers}/copyright" @ONLY)
configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in" "${papers}/changelog" @ONLY)
configure_file("${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${papers}/CHANGELOG.md" COPYONLY)
execute_process(COMMAND gzip -9nf "${papers}/changelog" "${papers}/CHANGELOG.md"
                COMMAND_ERROR_IS_FATAL ANY)
configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/library.overrides.in"
               "${papers}/overrides/${library_package}" @ONLY)
install(FILES "${papers}/overrides/${library_package}"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides" COMPONENT library)
install(FILES "${PROJECT_SOURCE_DIR}/cmake/debian/program.overrides" RENAME orvdiff
        DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides" COMPONENT program)
set(packages orvdiff "${library_package}" liborvdiff-dev)
foreach(component package IN ZIP_LISTS CPACK_COMPONENTS_ALL packages)
  install(FILES "${papers}/copyright" "${papers}/changelog.gz"
          DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component})
endforeach()
install(FILES "${papers}/CHANGELOG.md.gz"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/orvdiff" COMPONENT program)

include(CPack)
