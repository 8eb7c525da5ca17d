# Installation: libraries, headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS vekcv vekcore EXPORT vekcv)
install(FILES include/vekcv.h core/vekcore.h TYPE INCLUDE)
install(FILES README.md CHANGELOG.md LICENSE TYPE DOC)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/vekcv)
install(EXPORT vekcv NAMESPACE vekcv:: FILE vekcvTargets.cmake DESTINATION ${package})
configure_package_config_file(cmake/vekcvConfig.cmake.in ${VEKCV_GENERATED}/vekcvConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${VEKCV_GENERATED}/vekcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${VEKCV_GENERATED}/vekcvConfig.cmake ${VEKCV_GENERATED}/vekcvConfigVersion.cmake DESTINATION ${package})

# A static library brings its own needs to whoever links it.
set(VEKCV_LIBRARIES "-lvekcv -lvekcore")
if(NOT BUILD_SHARED_LIBS)
    string(APPEND VEKCV_LIBRARIES " -lgomp -lstdc++ -lm")
endif()
# Relative to the place of the file, as `cmake --install --prefix` gives the prefix only then.
file(RELATIVE_PATH VEKCV_UP_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/vekcv.pc.in ${VEKCV_GENERATED}/vekcv.pc @ONLY)
install(FILES ${VEKCV_GENERATED}/vekcv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
