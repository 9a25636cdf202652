# Warnings that every target of ours is built with. Headers of other projects are system headers and stay quiet.
add_library(tavik_warnings INTERFACE)
target_compile_options(tavik_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
  $<$<BOOL:${TAVIK_WARNINGS_AS_ERRORS}>:-Werror>)

# What makes a fault harder to exploit: the release is built with it, as distributions build theirs.
add_library(tavik_hardening INTERFACE)
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  include(CheckCXXCompilerFlag)
  check_cxx_compiler_flag(-fcf-protection TAVIK_HAS_CONTROL_FLOW_PROTECTION)  # x86 alone
  target_compile_options(tavik_hardening INTERFACE -fPIE -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
                         $<$<BOOL:${TAVIK_HAS_CONTROL_FLOW_PROTECTION}>:-fcf-protection>)
endif()

# tavik_library(NAME HEADERS ... SOURCES ... PUBLIC ... PRIVATE ...): the library of one folder. HEADERS and SOURCES are file
# names in that folder; PUBLIC and PRIVATE are what it links. Includes are written from TAVIK_INCLUDE_DIR.
function(tavik_library name)
  cmake_parse_arguments(ARG "" "" "HEADERS;SOURCES;PUBLIC;PRIVATE" ${ARGN})
  if(ARG_SOURCES)
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} tavik_warnings tavik_hardening)
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${ARG_PUBLIC})
  endif()
  get_target_property(kind ${name} TYPE)
  if(kind STREQUAL "INTERFACE_LIBRARY")
    set(visibility INTERFACE)
  else()
    set(visibility PUBLIC)
  endif()
  list(TRANSFORM ARG_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  target_sources(${name} ${visibility} FILE_SET HEADERS BASE_DIRS ${TAVIK_INCLUDE_DIR} FILES ${ARG_HEADERS})
endfunction()

# tavik_coroutines(NAME): for a library with coroutines. An old clang++ cannot write the object files in which this check of
# UndefinedBehaviorSanitizer has put a prologue into them (llvm-project #49689).
function(tavik_coroutines name)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 17)
    target_compile_options(${name} PRIVATE -fno-sanitize=function)
  endif()
endfunction()
