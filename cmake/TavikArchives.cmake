# Libraries that are linked into the program rather than loaded with it: each one that is loaded costs every run a quarter
# of a millisecond.

include_guard()
find_package(PkgConfig REQUIRED)
option(TAVIK_ARCHIVES "Link archives of other libraries into the program (OFF: shared ones, as distributions want)" ON)

# tavik_archives(NAME MODULES...): the interface library NAME, with the archives of these pkg-config modules and of what they
# need; with the shared library in place of an archive that is not installed.
function(tavik_archives name)
  pkg_check_modules(${name} REQUIRED QUIET ${ARGN})
  add_library(${name} INTERFACE)
  target_include_directories(${name} SYSTEM INTERFACE ${${name}_INCLUDE_DIRS})
  if(NOT TAVIK_ARCHIVES)
    target_link_libraries(${name} INTERFACE ${${name}_LINK_LIBRARIES})
    return()
  endif()
  list(REMOVE_ITEM ${name}_STATIC_LIBRARIES c m pthread stdc++)  # which the compiler adds itself
  foreach(library ${${name}_STATIC_LIBRARIES})
    find_library(TAVIK_${library}_ARCHIVE NAMES lib${library}.a ${library} HINTS ${${name}_STATIC_LIBRARY_DIRS})
    mark_as_advanced(TAVIK_${library}_ARCHIVE)
    if(TAVIK_${library}_ARCHIVE)
      target_link_libraries(${name} INTERFACE ${TAVIK_${library}_ARCHIVE})
    endif()
  endforeach()
endfunction()
