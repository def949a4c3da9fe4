# Release programs and archives stop at the first corrupted stack, overrun buffer or overwritten table.
# Sanitizers see more by themselves, and do not mix with fortified library calls.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)
if(NOT APPLE)
  add_link_options(LINKER:-z,relro LINKER:-z,now)
endif()
if(TARNAVELLE_SANITIZERS)
  return()
endif()

set(durcissement -fstack-protector-strong -Wformat -Werror=format-security)
set(drapeaux -fstack-clash-protection -fcf-protection=full)
if(NOT APPLE)  # which signs addresses for programs of another architecture alone
  list(APPEND drapeaux -mbranch-protection=standard)
endif()
foreach(drapeau IN LISTS drapeaux)
  string(MAKE_C_IDENTIFIER "TARNAVELLE${drapeau}" connu)
  check_cxx_compiler_flag("-Werror ${drapeau}" ${connu})
  if(${connu})
    list(APPEND durcissement ${drapeau})
  endif()
endforeach()

# Level 3 needs glibc 2.34 and a compiler that computes sizes at run time.
set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles([[
#include <cstdlib>
#if defined __USE_FORTIFY_LEVEL && __USE_FORTIFY_LEVEL < 3
#error
#endif
int main() {}]] TARNAVELLE_FORTIFIE_3)
unset(CMAKE_REQUIRED_FLAGS)
list(APPEND durcissement -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${TARNAVELLE_FORTIFIE_3}>,3,2>)

# What is delivered does not say where it was built.
list(APPEND durcissement -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)

# Not in a debug build: fortified calls need the optimiser, and a debugger looks for the sources.
add_compile_options("$<$<NOT:$<CONFIG:Debug>>:${durcissement}>")
