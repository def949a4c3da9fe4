# utf8proc::utf8proc. With utf8proc_USE_STATIC_LIBS, its archive is preferred.
include(FindPackageHandleStandardArgs)

set(noms utf8proc)
if(utf8proc_USE_STATIC_LIBS)
  list(PREPEND noms ${CMAKE_STATIC_LIBRARY_PREFIX}utf8proc${CMAKE_STATIC_LIBRARY_SUFFIX})
endif()
find_path(utf8proc_INCLUDE_DIR utf8proc.h)
find_library(utf8proc_LIBRARY NAMES ${noms})
find_package_handle_standard_args(utf8proc REQUIRED_VARS utf8proc_LIBRARY utf8proc_INCLUDE_DIR)

if(utf8proc_FOUND AND NOT TARGET utf8proc::utf8proc)
  add_library(utf8proc::utf8proc UNKNOWN IMPORTED)
  set_target_properties(utf8proc::utf8proc PROPERTIES
    IMPORTED_LOCATION ${utf8proc_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${utf8proc_INCLUDE_DIR})
endif()
