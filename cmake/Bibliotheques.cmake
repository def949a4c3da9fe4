# The libraries the house stands on. Each is found once, here; docs/ARCHITECTURE.md says why each was chosen.
find_package(Threads REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)

# Prefer the archives where the platform has them: a static bridge starts in half the time.
if(TARNAVELLE_STATIQUE)
  set(Boost_USE_STATIC_LIBS ON)
  set(OPENSSL_USE_STATIC_LIBS TRUE)
endif()
find_package(Boost 1.81 REQUIRED COMPONENTS url)
find_package(OpenSSL 3 REQUIRED)

find_path(UTF8PROC_INCLUDE_DIR utf8proc.h REQUIRED)
if(TARNAVELLE_STATIQUE)
  find_library(UTF8PROC_LIBRARY NAMES libutf8proc.a utf8proc REQUIRED)
else()
  find_library(UTF8PROC_LIBRARY NAMES utf8proc REQUIRED)
endif()
add_library(utf8proc INTERFACE)
target_include_directories(utf8proc SYSTEM INTERFACE ${UTF8PROC_INCLUDE_DIR})
target_link_libraries(utf8proc INTERFACE ${UTF8PROC_LIBRARY})

# Executables that start many times a day also carry their C++ runtime.
function(tarnavelle_lier_statiquement cible)
  if(TARNAVELLE_STATIQUE AND NOT TARNAVELLE_SANITIZERS)
    target_link_options(${cible} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()
