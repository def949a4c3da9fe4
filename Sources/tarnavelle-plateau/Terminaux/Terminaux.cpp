#include "Terminaux/Terminaux.hpp"

#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {

std::string_view description(Panne panne) {
  switch (panne) {
    case Panne::inconnu: return "ce terminal n'existe plus";
    case Panne::mort: return "son programme est terminé";
    case Panne::muet: return "les terminaux ne répondent pas";
    case Panne::absent: return "les terminaux sont hors d'atteinte";
    case Panne::refuse: return "le terminal refuse";
    case Panne::condition: return "l'écran a changé entre-temps";
  }
  return "";
}

std::string collable(std::string_view texte) {
  const std::string repare = Texte::reparer(texte);
  std::string colle;
  colle.reserve(repare.size());
  for (std::size_t i = 0; i < repare.size(); ++i) {
    const auto octet = static_cast<unsigned char>(repare[i]);
    const auto suivant = i + 1 < repare.size() ? static_cast<unsigned char>(repare[i + 1]) : 0u;
    if (octet == '\r' && suivant != '\n')
      colle += '\n';
    else if (octet == 0xC2 && suivant < 0xA0)
      ++i;  // a C1 control: U+0080 to U+009F
    else if (octet == '\n' || octet == '\t' || (octet >= 0x20 && octet != 0x7F))
      colle += repare[i];
  }
  while (colle.ends_with('\n')) colle.pop_back();
  return colle;
}

}  // namespace tarnavelle::Plateau
