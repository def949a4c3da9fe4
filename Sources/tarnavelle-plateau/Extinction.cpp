#include "Extinction.hpp"

#include <signal.h>
#include <unistd.h>

namespace tarnavelle::Plateau {

Resultat<std::vector<std::string>, std::string> Extinction::eteindre(const std::vector<std::string>& cles) {
  auto restes = terminaux_.eteindre(cles);
  if (!restes) return Sinon{std::string(description(restes.raison()))};
  eteinte_ = std::this_thread::get_id();
  return *std::move(restes);
}

void Extinction::achever() const {
  if (eteinte_.load() == std::this_thread::get_id()) ::kill(::getpid(), SIGTERM);
}

}  // namespace tarnavelle::Plateau
