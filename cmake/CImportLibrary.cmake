# SPDX-License-Identifier: MIT
# For C hosts of other compilers than MinGW's: writes the names of the C interface to Vistrel.def and, if llvm-dlltool is
# found, makes an import library Vistrel.lib from it. Visual Studio's own build makes a Vistrel.lib of all names.
if(NOT MINGW)
  return()
endif()
set(header ${PROJECT_SOURCE_DIR}/include/Vistrel/CInterface.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
file(READ ${header} declarations)
string(REGEX MATCHALL "VISTREL_EXPORT [^;(]*[(]" functions "${declarations}")
list(TRANSFORM functions REPLACE ".*[ *]([A-Za-z0-9]+)[(]" "    \\1")
list(SORT functions)
list(JOIN functions "\n" functions)
set(definitions ${PROJECT_BINARY_DIR}/Vistrel.def)
file(CONFIGURE OUTPUT ${definitions} CONTENT "LIBRARY Vistrel.dll\nEXPORTS\n${functions}\n" @ONLY)
install(FILES ${definitions} DESTINATION ${CMAKE_INSTALL_LIBDIR})

find_program(LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14 DOC "Makes an import library for Visual Studio")
if(LLVM_DLLTOOL)
  set(library ${PROJECT_BINARY_DIR}/Vistrel.lib)
  add_custom_command(OUTPUT ${library} COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -d ${definitions} -l ${library}
                     DEPENDS ${definitions} COMMENT "Making Vistrel.lib" VERBATIM)
  add_custom_target(vistrel_c_import_library ALL DEPENDS ${library})
  add_dependencies(Vistrel vistrel_c_import_library)
  install(FILES ${library} DESTINATION ${CMAKE_INSTALL_LIBDIR})
else()
  message(STATUS "Vistrel.lib for C hosts by Visual Studio is not made: llvm-dlltool was not found (Debian: llvm)")
endif()
