// What a test must not leave behind.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

namespace tarnavelle::essai {

/// How many threads ("task") or descriptors ("fd") this process has.
inline std::ptrdiff_t compter(const char* quoi) {
  // With a program's first thread, ThreadSanitizer starts one of its own that stays.
  [[maybe_unused]] static const bool dejaUnFil = (std::thread([] {}).join(), true);
  const std::filesystem::directory_iterator dossier(std::string("/proc/self/") + quoi);
  return std::distance(begin(dossier), end(dossier));
}

/// Waits until there are no more of them than before, ten seconds at most; how many there are then.
inline std::ptrdiff_t retomber(const char* quoi, std::ptrdiff_t avant) {
  for (int i = 0; i < 1000 && compter(quoi) > avant; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return compter(quoi);
}

}  // namespace tarnavelle::essai
