# "cpack -G DEB" makes a Debian package of each part that install.cmake installs.
set(library_package libgpsengine${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "gpsengine maintainers <maintainers@gpsengine.invalid>")
set(CPACK_COMPONENTS_ALL library development program)
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
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "one interface to many models of GPS receiver (shared library)
 Positions, satellites, settings, raw measurements and ephemerides of nineteen
 models of GPS receiver as records, their commands, recording and playback.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libgpsengine-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "one interface to many models of GPS receiver (development files)
 What programs on the gpsengine library are built with: headers, CMake and
 pkg-config files, and examples.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME gpsengine)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "shows, decodes, commands and simulates GPS receivers
 Shows what a receiver sends as text or JSON, decodes recordings, sets a
 receiver up in its own language, logs raw data as RINEX, and simulates
 nineteen models of receiver on pseudo-terminals.")

include(CPack)
