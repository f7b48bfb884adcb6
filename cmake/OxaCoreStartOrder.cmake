# What runs while a process loads the library, starts it up, logs a line and ends lies together, instead of a little in
# each of the pages (scripts/start-order writes the list). A function that the list doesn't know, or that isn't there
# any more, does no harm. GNU's linker has no option for that: its own script, as it shows it, is given the list. Other
# linkers show none and do without; so does a library that is a part of another project, or made for another machine,
# since what they say of the linker isn't all known here. With link-time optimisation the list has no effect:
# functions have no sections of their own then.
if(NOT BUILD_SHARED_LIBS OR OXACORE_SANITIZE OR OXACORE_COVERAGE OR NOT PROJECT_IS_TOP_LEVEL OR CMAKE_CROSSCOMPILING
   OR CMAKE_CXX_COMPILER_TARGET OR CMAKE_LINKER_TYPE)
  return()
endif()

set(start_order "${CMAKE_CURRENT_SOURCE_DIR}/start-order.txt")
set(start_script "${CMAKE_CURRENT_BINARY_DIR}/start-order.ld")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${start_order}")
string(TOUPPER "${CMAKE_BUILD_TYPE}" type)
separate_arguments(linker_flags NATIVE_COMMAND "${CMAKE_CXX_COMPILER_ARG1} ${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${type}}
  ${CMAKE_SHARED_LINKER_FLAGS} ${CMAKE_SHARED_LINKER_FLAGS_${type}}")
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -shared ${linker_flags} -Wl,--verbose -x c++ /dev/null -o /dev/null
  OUTPUT_VARIABLE script ERROR_QUIET)
set(place "*(.text .stub ")
string(REGEX REPLACE ".*=====\n(.*)\n=====.*" "\\1" script "${script}")
string(FIND "${script}" "${place}" found)
if(found EQUAL -1)
  return()
endif()

file(STRINGS "${start_order}" functions REGEX "^[^#]")
list(TRANSFORM functions REPLACE "(.+)" "*(.text.\\1)")
list(JOIN functions "\n    " functions)
string(REPLACE "${place}" "*FaultJumps*(.text)\n    *libc_nonshared.a:*(.text)\n    ${functions}\n    ${place}"
  script "${script}")
file(CONFIGURE OUTPUT "${start_script}" CONTENT "${script}\n" @ONLY)
unset(OXACORE_HAS_START_ORDER CACHE)  # an answer of before was of another linker or another script
check_linker_flag(CXX "LINKER:-T,${start_script}" OXACORE_HAS_START_ORDER)
if(OXACORE_HAS_START_ORDER)
  set(OXACORE_START_ORDER "${start_order}" PARENT_SCOPE)
  target_compile_options(OxaCoreObjects PRIVATE -ffunction-sections)
  target_link_options(OxaCore PRIVATE "LINKER:-T,${start_script}")
  set_property(TARGET OxaCore APPEND PROPERTY LINK_DEPENDS "${start_script}")
endif()
