# How everything in this project is compiled. Nothing of it reaches the users of the installed libraries.

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

if(WMQ_MARCH AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  add_compile_options(-march=${WMQ_MARCH})
endif()
if(WMQ_SANITIZE)
  add_compile_options(-fsanitize=${WMQ_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${WMQ_SANITIZE})
endif()

add_library(wmq_options INTERFACE)
target_compile_options(wmq_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
# Before version 13, g++ -O2 takes the inlined concatenation of strings for an overlapping copy.
target_compile_options(
  wmq_options
  INTERFACE $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
if(WMQ_WARNINGS_AS_ERRORS)
  target_compile_options(wmq_options INTERFACE -Werror)
endif()
