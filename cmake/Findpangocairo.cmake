# pangocairo::pangocairo: Pango over Cairo, with the headers that its own include. No pkg-config is asked, which
# Homebrew's pango does not bring.
include(FindPackageHandleStandardArgs)

set(pieces)
foreach(bibliotheque pangocairo-1.0 pango-1.0 gobject-2.0 glib-2.0 cairo)
  find_library(pangocairo_${bibliotheque}_LIBRARY NAMES ${bibliotheque})
  list(APPEND pieces pangocairo_${bibliotheque}_LIBRARY)
endforeach()
set(bibliotheques ${pieces})

# GLib keeps one of its headers beside its library.
if(pangocairo_glib-2.0_LIBRARY)
  cmake_path(GET pangocairo_glib-2.0_LIBRARY PARENT_PATH a_cote)
endif()
foreach(entete pango/pangocairo.h cairo.h glib.h glibconfig.h hb.h)
  string(MAKE_C_IDENTIFIER ${entete} nom)
  find_path(pangocairo_${nom}_INCLUDE_DIR ${entete} HINTS ${a_cote}
    PATH_SUFFIXES pango-1.0 cairo glib-2.0 glib-2.0/include harfbuzz)
  list(APPEND pieces pangocairo_${nom}_INCLUDE_DIR)
endforeach()
find_package_handle_standard_args(pangocairo REQUIRED_VARS ${pieces})

if(pangocairo_FOUND AND NOT TARGET pangocairo::pangocairo)
  add_library(pangocairo::pangocairo INTERFACE IMPORTED)
  foreach(piece IN LISTS pieces)
    if(piece IN_LIST bibliotheques)
      target_link_libraries(pangocairo::pangocairo INTERFACE ${${piece}})
    else()
      target_include_directories(pangocairo::pangocairo INTERFACE ${${piece}})
    endif()
  endforeach()
endif()
