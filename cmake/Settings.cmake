# SPDX-License-Identifier: MIT
# Settings of all targets: language level, warnings, sanitizers.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()

add_library(vistrel_settings INTERFACE)
target_compile_definitions(vistrel_settings INTERFACE QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_CAST_FROM_ASCII
                                                      QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
if(WIN32)
  target_compile_definitions(vistrel_settings INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
  # Windows looks for a program's libraries beside it.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endif()
if(MSVC)
  target_compile_options(vistrel_settings INTERFACE /W4 /Zc:__cplusplus /utf-8)
else()
  target_compile_options(vistrel_settings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
endif()
if(MINGW) # reproducible builds
  target_compile_options(vistrel_settings INTERFACE -Wdate-time)
  add_link_options(LINKER:--no-insert-timestamp)
endif()
if(VISTREL_WARNINGS_AS_ERRORS)
  target_compile_options(vistrel_settings INTERFACE $<IF:$<CXX_COMPILER_ID:MSVC>,/WX,-Werror>)
endif()
if(VISTREL_SANITIZE)
  target_compile_options(vistrel_settings INTERFACE -fsanitize=${VISTREL_SANITIZE} -fno-sanitize-recover=all
                                                    -fno-omit-frame-pointer)
  target_link_options(vistrel_settings INTERFACE -fsanitize=${VISTREL_SANITIZE})
endif()
