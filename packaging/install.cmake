# What is installed, in three parts: the shared library, what a host is built with, and the program.
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/gpsengine)

install(TARGETS gpsengine EXPORT gpsengineTargets
        LIBRARY COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development
        FILE_SET HEADERS COMPONENT development)
install(EXPORT gpsengineTargets NAMESPACE gpsengine:: DESTINATION ${config_dir} COMPONENT development)

configure_package_config_file(packaging/gpsengineConfig.cmake.in packaging/gpsengineConfig.cmake
                              INSTALL_DESTINATION ${config_dir})
# As the name of the shared library: 0.2 does not serve who asks for 0.1.
write_basic_package_version_file(packaging/gpsengineConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/packaging/gpsengineConfig.cmake
              ${PROJECT_BINARY_DIR}/packaging/gpsengineConfigVersion.cmake
        DESTINATION ${config_dir} COMPONENT development)

# Names the prefix, which "cmake --install --prefix" may still change: so it is written when that is known.
foreach(variable PROJECT_VERSION PROJECT_DESCRIPTION CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
  install(CODE "set(${variable} \"${${variable}}\")" COMPONENT development)
endforeach()
install(CODE "configure_file(\"${PROJECT_SOURCE_DIR}/packaging/gpsengine.pc.in\"
                             \"${PROJECT_BINARY_DIR}/packaging/gpsengine.pc\" @ONLY)" COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/packaging/gpsengine.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)

if(GPSENGINE_HOST)
  install(TARGETS gpsengine_host RUNTIME COMPONENT program)

  # The program prints its own manual and completion scripts.
  set(documents ${PROJECT_BINARY_DIR}/packaging/documents)
  file(MAKE_DIRECTORY ${documents})
  add_custom_command(OUTPUT ${documents}/gpsengine.1.gz ${documents}/gpsengine ${documents}/_gpsengine
                     COMMAND gpsengine_host man > ${documents}/gpsengine.1
                     COMMAND gzip -9nf ${documents}/gpsengine.1
                     COMMAND gpsengine_host completion bash > ${documents}/gpsengine
                     COMMAND gpsengine_host completion zsh > ${documents}/_gpsengine
                     DEPENDS gpsengine_host COMMENT "Printing the manual and the completion scripts" VERBATIM)
  add_custom_target(gpsengine_documents ALL DEPENDS ${documents}/gpsengine.1.gz)
  install(FILES ${documents}/gpsengine.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
  install(FILES ${documents}/gpsengine DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  install(FILES ${documents}/_gpsengine DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT program)

  # A unit is there to be enabled; a rule would act by itself, so that it is an example.
  file(GLOB units CONFIGURE_DEPENDS contrib/*.service)
  file(GLOB rules CONFIGURE_DEPENDS contrib/*.rules)
  install(FILES ${units} DESTINATION lib/systemd/system COMPONENT program)
  install(FILES ${rules} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/gpsengine/examples COMPONENT program)
endif()

install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libgpsengine-dev COMPONENT development)
