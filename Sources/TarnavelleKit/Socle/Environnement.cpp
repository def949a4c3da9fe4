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
  auto valeur = octets(nom);
  if (!valeur) return std::nullopt;
  if (!Texte::utf8Valide(*valeur)) valeur = Texte::reparer(*valeur);
  const auto net = Texte::rogner(*valeur);
  if (net.empty()) return std::nullopt;
  if (net.size() < valeur->size()) valeur = std::string(net);
  return valeur;
}

}  // namespace tarnavelle
