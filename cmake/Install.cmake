# Installation: libraries, headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS vekcv vekcore EXPORT vekcv)
install(FILES include/vekcv.h core/vekcore.h TYPE INCLUDE)
install(FILES README.md CHANGELOG.md LICENSE TYPE DOC)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/vekcv)
set(generated ${CMAKE_BINARY_DIR}/generated)
install(EXPORT vekcv NAMESPACE vekcv:: FILE vekcvTargets.cmake DESTINATION ${package})
configure_package_config_file(cmake/vekcvConfig.cmake.in ${generated}/vekcvConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${generated}/vekcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${generated}/vekcvConfig.cmake ${generated}/vekcvConfigVersion.cmake DESTINATION ${package})

# A static library brings its own needs to whoever links it.
set(VEKCV_PRIVATE_LIBRARIES "-lvekcore -lgomp -lstdc++ -lm")
if(BUILD_SHARED_LIBS)
    set(VEKCV_LIBRARIES "-lvekcv -lvekcore")
else()
    set(VEKCV_LIBRARIES "-lvekcv ${VEKCV_PRIVATE_LIBRARIES}")
endif()
# Relative to the place of the file, as `cmake --install --prefix` gives the prefix only then.
file(RELATIVE_PATH VEKCV_UP_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/vekcv.pc.in ${generated}/vekcv.pc @ONLY)
install(FILES ${generated}/vekcv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
