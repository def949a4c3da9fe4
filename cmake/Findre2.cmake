# re2::re2: by its own CMake package where it has one (its newer versions, which call Abseil), else the bare library.
# With re2_USE_STATIC_LIBS, its archive is preferred to the latter.
include(FindPackageHandleStandardArgs)

find_package(re2 CONFIG QUIET)
if(TARGET re2::re2)
  set(re2_FOUND TRUE)
  return()
endif()

set(noms re2)
if(re2_USE_STATIC_LIBS)
  list(PREPEND noms ${CMAKE_STATIC_LIBRARY_PREFIX}re2${CMAKE_STATIC_LIBRARY_SUFFIX})
endif()
find_path(re2_INCLUDE_DIR re2/re2.h)
find_library(re2_LIBRARY NAMES ${noms})
find_package_handle_standard_args(re2 REQUIRED_VARS re2_LIBRARY re2_INCLUDE_DIR)
if(re2_FOUND)
  add_library(re2::re2 UNKNOWN IMPORTED)
  set_target_properties(re2::re2 PROPERTIES
    IMPORTED_LOCATION ${re2_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${re2_INCLUDE_DIR})
endif()
