# Language, warnings, sanitizers and the helpers that declare the house's targets.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

# Four components are installed: "programmes", "plateau" for whoever has no cockpit, "voix", and "kit" for whoever builds
# on it.
include(GNUInstallDirs)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME programmes)
set(TARNAVELLE_ENTETES ${CMAKE_INSTALL_INCLUDEDIR}/TarnavelleKit)

# The target all_verify_interface_header_sets compiles each header of the kit alone.
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)

set(TARNAVELLE_SANITIZERS "" CACHE STRING "Comma-separated sanitizers for every target")
if(TARNAVELLE_SANITIZERS)
  add_compile_options(-fsanitize=${TARNAVELLE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TARNAVELLE_SANITIZERS})
endif()

# Every library is instrumented, so that libFuzzer sees the branches it takes.
if(TARNAVELLE_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "TARNAVELLE_FUZZ demande clang.")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

add_compile_options(-ffunction-sections -fdata-sections)
if(APPLE)
  add_link_options(LINKER:-dead_strip)
else()
  add_link_options(LINKER:--gc-sections)
endif()

# Warnings apply to our own targets only, through these two helpers.
function(tarnavelle_avertir cible)
  target_compile_options(${cible} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ reports false "maybe uninitialized" inside std::variant and std::optional at -O2.
    target_compile_options(${cible} PRIVATE -Wno-maybe-uninitialized)
  endif()
endfunction()

# A family of the kit: one static library, TarnavelleKit::<family>, of the folder of that name. What stands under
# include/<family> is public and installed, in the build tree too (a header that configuring writes); the
# rest it keeps to itself. What follows the name is linked: famille(NAME PUBLIC ... PRIVATE ...).
function(tarnavelle_famille nom)
  set(cible Tarnavelle${nom})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${nom}/*.cpp)
  add_library(${cible} STATIC ${sources})
  add_library(TarnavelleKit::${nom} ALIAS ${cible})
  set_target_properties(${cible} PROPERTIES EXPORT_NAME ${nom})
  target_compile_features(${cible} PUBLIC cxx_std_20)
  foreach(lieu IN ITEMS ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR})
    file(GLOB entetes CONFIGURE_DEPENDS ${lieu}/${nom}/include/${nom}/*.hpp)
    if(entetes)
      target_sources(${cible} PUBLIC FILE_SET HEADERS BASE_DIRS ${lieu}/${nom}/include FILES ${entetes})
    endif()
  endforeach()
  target_link_libraries(${cible} ${ARGN})
  tarnavelle_avertir(${cible})
  install(TARGETS ${cible} EXPORT TarnavelleKit COMPONENT kit
    FILE_SET HEADERS DESTINATION ${TARNAVELLE_ENTETES} COMPONENT kit INCLUDES DESTINATION ${TARNAVELLE_ENTETES})
  set_property(GLOBAL APPEND PROPERTY TARNAVELLE_FAMILLES ${nom})
endfunction()

# A piece of programs, in a folder of that name, as <house>::<piece>: as a family, but nobody else's business, so not
# installed. Called from the folder's own CMakeLists.txt.
function(tarnavelle_piece_de programme maison nom)
  set(cible ${programme}-${nom})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(${cible} STATIC ${sources})
  add_library(${maison}::${nom} ALIAS ${cible})
  target_compile_features(${cible} PUBLIC cxx_std_20)
  target_include_directories(${cible} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include)
  target_link_libraries(${cible} ${ARGN})
  tarnavelle_avertir(${cible})
endfunction()

# A piece of the board.
function(tarnavelle_piece nom)
  tarnavelle_piece_de(tarnavelle-plateau TarnavellePlateau ${nom} ${ARGN})
endfunction()

# A program that is installed: its main, and all the rest as the library <name>-lib, which tests link. Called from its
# folder; what follows the name is linked to the library.
function(tarnavelle_programme nom)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  list(REMOVE_ITEM sources ${CMAKE_CURRENT_SOURCE_DIR}/main.cpp)
  add_library(${nom}-lib STATIC ${sources})
  target_include_directories(${nom}-lib PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${nom}-lib ${ARGN})
  tarnavelle_avertir(${nom}-lib)

  add_executable(${nom} main.cpp)
  target_link_libraries(${nom} PRIVATE ${nom}-lib)
  tarnavelle_avertir(${nom})
  tarnavelle_lier_statiquement(${nom})
  install(TARGETS ${nom} RUNTIME)
endfunction()
