// A host name, "lent.example", whose look-up takes three seconds and then fails; for one file of a program.
#pragma once

#include <dlfcn.h>
#include <netdb.h>

#include <atomic>
#include <chrono>
#include <string_view>
#include <thread>

namespace tarnavelle::essai {

inline std::atomic<int> recherchesLentes = 0;  ///< begun

}  // namespace tarnavelle::essai

/// Stands before the system's.
extern "C" int getaddrinfo(const char* nom, const char* service, const addrinfo* indices, addrinfo** resultat) {
  if (nom && std::string_view(nom) == "lent.example") {
    ++tarnavelle::essai::recherchesLentes;
    std::this_thread::sleep_for(std::chrono::seconds(3));
    return EAI_AGAIN;
  }
  const auto suivante = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
  return suivante(nom, service, indices, resultat);
}
