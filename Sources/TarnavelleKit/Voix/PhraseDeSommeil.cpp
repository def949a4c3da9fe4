#include "Voix/PhraseDeSommeil.hpp"

#include "Socle/Texte.hpp"

namespace tarnavelle::PhraseDeSommeil {

const std::set<std::string, std::less<>>& corpusNormalise() {
  static const auto normalise = [] {
    std::set<std::string, std::less<>> phrases;
    for (const auto phrase : corpus) phrases.insert(normaliser(phrase));
    return phrases;
  }();
  return normalise;
}

std::string normaliser(std::string_view texte) {
  const std::string plie = Texte::minuscules(Texte::sansAccents(texte));
  return Texte::joindre(Texte::suitesDeLettres(plie), " ");
}

bool correspond(std::string_view texte) { return corpusNormalise().contains(normaliser(texte)); }

}  // namespace tarnavelle::PhraseDeSommeil
