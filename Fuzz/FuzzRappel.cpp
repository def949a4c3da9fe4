// What is asked of the board's memory: words, whatever the bytes; it is answered, and finds what holds them.
#include <string>

#include "Cible.hpp"
#include "Registre/Registre.hpp"

using namespace tarnavelle::Plateau;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  static auto registre = Registre::enMemoire();
  static const bool note = registre && registre->noter({.texte = "le port dev"});
  exiger(note);
  const auto requete = vue(octets, taille);
  exiger(static_cast<bool>(registre->rappeler({.requete = requete})));
  const auto trouvees = registre->rappeler({.requete = "port " + std::string(requete)});
  exiger(trouvees && trouvees->size() == 1);
  return 0;
}
