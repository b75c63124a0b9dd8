# "cpack -G DEB" makes a Debian package of each part that install.cmake installs.
set(library_package libgpsengine${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "one interface to nineteen models of GPS receiver")
set(CPACK_PACKAGE_CONTACT "gpsengine maintainers <maintainers@gpsengine.invalid>")
set(CPACK_COMPONENTS_ALL library development)
set(packages ${library_package} libgpsengine-dev)
if(GPSENGINE_HOST)
  list(APPEND CPACK_COMPONENTS_ALL program)
  list(APPEND packages gpsengine)
endif()
if(GPSENGINE_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
  list(APPEND packages python3-gpsengine)
endif()
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/deb)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/gpsengine)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "Positions, satellites, settings, raw measurements and ephemerides of nineteen
models of GPS receiver as records, their commands, recording and playback.
.
This package has the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libgpsengine-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "This package has what programs on the gpsengine library are built with:
headers, CMake and pkg-config files, and examples.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME gpsengine)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
    "This package has a program that shows what a receiver sends as text or JSON,
decodes recordings, sets a receiver up in its own language, logs raw data as
RINEX, and simulates nineteen models of receiver on pseudo-terminals.")

# The module is compiled for one version of the interpreter.
if(GPSENGINE_PYTHON)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-gpsengine)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  math(EXPR next_minor "${GPSENGINE_PYTHON_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}), python3 (>= 3.${GPSENGINE_PYTHON_MINOR}), python3 (<< 3.${next_minor})")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-numpy, python3-matplotlib")
  set(CPACK_COMPONENT_PYTHON_DESCRIPTION
      "This package has the library as a Python module: fixes, satellites and raw data
as immutable values, iterators for threads and for asyncio, arrays for numpy.")
endif()

# What the distribution asks of every package: its releases in a form of their own, beside the list of changes.
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/packaging/changelog "gpsengine (${PROJECT_VERSION}) unstable; urgency=medium

  * Release ${PROJECT_VERSION}, as CHANGELOG.md.gz tells.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")
configure_file(CHANGELOG.md packaging/CHANGELOG.md COPYONLY)
execute_process(COMMAND gzip -9nf changelog CHANGELOG.md WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/packaging
                COMMAND_ERROR_IS_FATAL ANY)
foreach(component package IN ZIP_LISTS CPACK_COMPONENTS_ALL packages)
  install(FILES ${PROJECT_BINARY_DIR}/packaging/changelog.gz ${PROJECT_BINARY_DIR}/packaging/CHANGELOG.md.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()
# The loader is to hear of the library.
file(WRITE ${PROJECT_BINARY_DIR}/packaging/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/triggers)

include(CPack)
