# The libraries the house stands on. Each is found once, here; docs/ARCHITECTURE.md says why each was chosen.
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
find_package(Threads REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)

# Prefer the archives where the platform has them: a static bridge starts in half the time.
if(TARNAVELLE_STATIQUE)
  set(Boost_USE_STATIC_LIBS ON)
  set(OPENSSL_USE_STATIC_LIBS TRUE)
  set(utf8proc_USE_STATIC_LIBS TRUE)
  set(re2_USE_STATIC_LIBS TRUE)
endif()
find_package(Boost 1.81 REQUIRED CONFIG COMPONENTS url)
find_package(OpenSSL 3 REQUIRED)
find_package(utf8proc REQUIRED)

# The board's own: the bridge and the client never link them.
if(TARNAVELLE_PLATEAU)
  find_package(re2 REQUIRED)
  if(TARNAVELLE_STATIQUE)
    find_library(SQLite3_LIBRARY NAMES libsqlite3.a sqlite3)
  endif()
  find_package(SQLite3 3.37 REQUIRED)  # STRICT tables
  if(TARNAVELLE_CAPTURE)
    find_package(pangocairo REQUIRED)
  endif()
endif()

# The voice's own: shared ones, which bring the sound system that this machine has.
if(TARNAVELLE_VOIX)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(portaudio REQUIRED IMPORTED_TARGET portaudio-2.0)
  pkg_check_modules(sndfile REQUIRED IMPORTED_TARGET sndfile)
  pkg_check_modules(samplerate REQUIRED IMPORTED_TARGET samplerate)
endif()

# Debian 13's archive of OpenSSL calls two libraries, of which FindOpenSSL hears by pkg-config only, and as shared ones.
set(TARNAVELLE_OPENSSL_ARCHIVES)
if(OPENSSL_CRYPTO_LIBRARY MATCHES "[.]a$")
  file(STRINGS ${OPENSSL_CRYPTO_LIBRARY} appels REGEX "^ZSTD_" LIMIT_COUNT 1)
  if(appels)
    find_library(TARNAVELLE_ZSTD libzstd.a REQUIRED)
    find_library(TARNAVELLE_ZLIB libz.a REQUIRED)
    set(TARNAVELLE_OPENSSL_ARCHIVES ${TARNAVELLE_ZSTD} ${TARNAVELLE_ZLIB})
    foreach(cible SSL Crypto)
      get_target_property(liens OpenSSL::${cible} INTERFACE_LINK_LIBRARIES)
      list(REMOVE_ITEM liens ZLIB::ZLIB zstd)
      set_target_properties(OpenSSL::${cible} PROPERTIES INTERFACE_LINK_LIBRARIES "${liens}")
    endforeach()
    target_link_libraries(OpenSSL::Crypto INTERFACE ${TARNAVELLE_OPENSSL_ARCHIVES})
  endif()
endif()

# Executables that start many times a day also carry their C++ runtime.
function(tarnavelle_lier_statiquement cible)
  # macOS has its runtime in the system, and refuses these.
  if(TARNAVELLE_STATIQUE AND NOT TARNAVELLE_SANITIZERS AND NOT APPLE)
    target_link_options(${cible} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()
