// What the fuzz targets share: the entry point they define, and the check that stops the run.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille);

inline std::string_view vue(const unsigned char* octets, std::size_t taille) {
  return {reinterpret_cast<const char*>(octets), taille};
}

inline void exiger(bool vrai) {
  if (!vrai) std::abort();
}
