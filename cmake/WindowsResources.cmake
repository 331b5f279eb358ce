# SPDX-License-Identifier: MIT
# The Windows resources of a library or program: version, icon and, for programs, the manifest.

# vistrel_windows_resources(target description): does nothing for other systems.
function(vistrel_windows_resources target description)
  if(NOT WIN32)
    return()
  endif()
  set(icon "IDI_ICON1 ICON \"${VISTREL_WINDOWS_ICON}\"") # Qt finds its windows' icon by this name
  get_target_property(kind ${target} TYPE)
  if(kind STREQUAL "EXECUTABLE")
    set(type 0x1L)
    set(suffix .exe)
    set(manifest_file ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest)
    configure_file(${Vistrel_SOURCE_DIR}/resources/windows/program.manifest.in ${manifest_file} @ONLY)
    if(MSVC) # the linker merges it with its own
      target_sources(${target} PRIVATE ${manifest_file})
    else()
      set(manifest "1 24 \"${manifest_file}\"")
    endif()
  else()
    set(type 0x2L)
    set(suffix .dll)
  endif()
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_resources.rc)
  configure_file(${Vistrel_SOURCE_DIR}/resources/windows/resources.rc.in ${source} @ONLY)
  set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS "${VISTREL_WINDOWS_ICON};${manifest_file}")
  add_library(${target}_resources OBJECT ${source})
  set_target_properties(${target}_resources PROPERTIES AUTOMOC OFF)
  add_dependencies(${target}_resources vistrel_windows_icon)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_resources>)
endfunction()
