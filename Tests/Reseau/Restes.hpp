// What a test must not leave behind.
#pragma once

#if defined(__APPLE__)
#include <mach/mach.h>
#endif

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>

namespace tarnavelle::essai {

#if defined(__APPLE__)
inline std::ptrdiff_t compterFils() {
  thread_act_array_t fils = nullptr;
  mach_msg_type_number_t combien = 0;
  if (::task_threads(mach_task_self(), &fils, &combien) != KERN_SUCCESS) return 0;
  ::vm_deallocate(mach_task_self(), reinterpret_cast<vm_address_t>(fils), combien * sizeof *fils);
  return combien;
}
#endif

/// How many threads ("task") or descriptors ("fd") this process has.
inline std::ptrdiff_t compter(const char* quoi) {
  // With a program's first thread, ThreadSanitizer starts one of its own that stays.
  [[maybe_unused]] static const bool dejaUnFil = (std::thread([] {}).join(), true);
#if defined(__APPLE__)
  if (std::string_view(quoi) == "task") return compterFils();
  const std::filesystem::directory_iterator dossier("/dev/fd");
#else
  const std::filesystem::directory_iterator dossier(std::string("/proc/self/") + quoi);
#endif
  return std::distance(begin(dossier), end(dossier));
}

/// Waits until there are no more of them than before, ten seconds at most; how many there are then.
inline std::ptrdiff_t retomber(const char* quoi, std::ptrdiff_t avant) {
  for (int i = 0; i < 1000 && compter(quoi) > avant; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return compter(quoi);
}

}  // namespace tarnavelle::essai
