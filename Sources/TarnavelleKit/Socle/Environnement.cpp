#include "Socle/Environnement.hpp"

#include <cstdlib>

#include "Socle/Texte.hpp"

namespace tarnavelle {

Environnement environnementDuProcessus(std::initializer_list<const char*> noms) {
  Environnement lu;
  for (const char* nom : noms)
    if (const char* valeur = std::getenv(nom)) lu.emplace(nom, Texte::reparer(valeur));
  return lu;
}

std::optional<std::string> variable(const Environnement& environnement, std::string_view nom) {
  const auto trouvee = environnement.find(nom);
  if (trouvee == environnement.end()) return std::nullopt;
  const auto valeur = Texte::rogner(trouvee->second);
  if (valeur.empty()) return std::nullopt;
  return std::string(valeur);
}

}  // namespace tarnavelle
