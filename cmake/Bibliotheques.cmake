# The libraries the house stands on. Each is found once, here; docs/ARCHITECTURE.md says why each was chosen.
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
find_package(Threads REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)

# Prefer the archives where the platform has them: a static bridge starts in half the time.
if(TARNAVELLE_STATIQUE)
  set(Boost_USE_STATIC_LIBS ON)
  set(OPENSSL_USE_STATIC_LIBS TRUE)
  set(utf8proc_USE_STATIC_LIBS TRUE)
endif()
find_package(Boost 1.81 REQUIRED COMPONENTS url)
find_package(OpenSSL 3 REQUIRED)
find_package(utf8proc REQUIRED)

# Executables that start many times a day also carry their C++ runtime.
function(tarnavelle_lier_statiquement cible)
  if(TARNAVELLE_STATIQUE AND NOT TARNAVELLE_SANITIZERS)
    target_link_options(${cible} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()
