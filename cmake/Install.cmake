# SPDX-License-Identifier: MIT
# `cmake --install`: library, headers, CMake package, pkg-config files, licence, guides, examples.
include(CMakePackageConfigHelpers)

install(TARGETS Vistrel EXPORT VistrelTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${VISTREL_PUBLIC_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Vistrel)
install(EXPORT VistrelTargets NAMESPACE Vistrel:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Vistrel)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/VistrelConfig.cmake.in ${PROJECT_BINARY_DIR}/VistrelConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Vistrel
                              PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VistrelConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VistrelConfig.cmake ${PROJECT_BINARY_DIR}/VistrelConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Vistrel)

file(RELATIVE_PATH VISTREL_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(file Vistrel.pc VistrelQt.pc)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${file}.in ${PROJECT_BINARY_DIR}/${file} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

# With the same folders as here, so that the links in the guides work.
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN __pycache__ EXCLUDE)
