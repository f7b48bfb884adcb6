# How our own code is compiled. Nothing here reaches a host but what src/CMakeLists.txt exports.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_UNITY_BUILD OFF)  # whatever a host thinks of it: names that a file has for itself are those of others, too

if(PROJECT_IS_TOP_LEVEL)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
  endif()
  find_program(OXACORE_CCACHE ccache)
  if(OXACORE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Raise sites carry the time stamp of their source file, which would defeat every cache hit; so do the tests'
    # precompiled headers. The language of messages makes no other code.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=time_macros,pch_defines,locale ${OXACORE_CCACHE})
  endif()
endif()

# A quick-to-load library: no unique symbols, or dlclose would keep it mapped for ever.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-fno-gnu-unique)
endif()

if(OXACORE_SANITIZE)
  add_compile_options(-fsanitize=${OXACORE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${OXACORE_SANITIZE})
endif()

# The code of tests, and of small examples, is compiled for the compiler's time, not for its own: optimised and
# instrumented it would take longer to compile than all of it takes to run. The library keeps its preset's flags.
set(OXACORE_TEST_OPTIONS -O1)
if(OXACORE_SANITIZE)
  set(OXACORE_TEST_OPTIONS -O0)
endif()
if(OXACORE_SANITIZE MATCHES "undefined")
  # Checks of every single access through a pointer take a quarter of that time; the library itself has them.
  list(APPEND OXACORE_TEST_OPTIONS -fno-sanitize=null,alignment,object-size,vptr)
endif()

# The warnings of our own build, as errors; a host that adds this project as a folder keeps its own.
add_library(OxaCoreWarnings INTERFACE)
if(PROJECT_IS_TOP_LEVEL)
  target_compile_options(OxaCoreWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-qual -Wformat=2 -Wundef)
  if(OXACORE_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The sanitizers' own instrumentation makes the flow analysis of g++ 12 see ghosts.
    target_compile_options(OxaCoreWarnings INTERFACE -Wno-maybe-uninitialized -Wno-stringop-overflow -Wno-tsan)
  endif()
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # The same flags mean more to clang++. It builds the fuzz targets: its opinion is told and stops nothing.
    target_compile_options(OxaCoreWarnings INTERFACE -Wno-error -Wno-format-nonliteral -Wno-sign-conversion)
  endif()
endif()
