#include "Socle/Environnement.hpp"

#include <cstdlib>

#include "Socle/Texte.hpp"

namespace tarnavelle {

std::optional<std::string> Variables::octets(const char* nom) const {
  if (!table_) {
    const char* valeur = std::getenv(nom);
    return valeur ? std::optional<std::string>(valeur) : std::nullopt;
  }
  const auto trouvee = table_->find(nom);
  return trouvee == table_->end() ? std::nullopt : std::optional(trouvee->second);
}

std::optional<std::string> Variables::texte(const char* nom) const {
  const auto brute = octets(nom);
  if (!brute) return std::nullopt;
  const std::string reparee = Texte::reparer(*brute);
  const auto valeur = Texte::rogner(reparee);
  if (valeur.empty()) return std::nullopt;
  return std::string(valeur);
}

}  // namespace tarnavelle
