#include "Reseau/NomLent.hpp"

#include <dlfcn.h>
#include <netdb.h>

#include <chrono>
#include <string_view>
#include <thread>

namespace tarnavelle::essai {

std::atomic<int> recherchesLentes = 0;
std::atomic<int> recherchesFinies = 0;

}  // namespace tarnavelle::essai

/// Stands before the system's.
extern "C" int getaddrinfo(const char* nom, const char* service, const addrinfo* indices, addrinfo** resultat) {
  if (nom && std::string_view(nom) == "lent.example") {
    ++tarnavelle::essai::recherchesLentes;
    std::this_thread::sleep_for(std::chrono::seconds(3));
    ++tarnavelle::essai::recherchesFinies;
    return EAI_AGAIN;
  }
  const auto suivante = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
  return suivante(nom, service, indices, resultat);
}
