# Builds for macOS on Linux, with what outils/bibliotheques lays down. The preset says for which processor.
set(racine ${CMAKE_CURRENT_LIST_DIR}/../../build/bibliotheques/mac-${TARNAVELLE_MAC})
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${TARNAVELLE_MAC})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARNAVELLE_MAC)

set(CMAKE_CXX_COMPILER ${racine}/bin/c++)
set(CMAKE_AR ${racine}/bin/ar)
set(CMAKE_RANLIB ${racine}/bin/ranlib)
set(CMAKE_FIND_ROOT_PATH ${racine})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(quoi LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${quoi} ONLY)
endforeach()
# A tool that strips later would undo the linker's signature, without which an ARM Mac starts nothing.
set(CMAKE_EXE_LINKER_FLAGS_RELEASE_INIT -s)
