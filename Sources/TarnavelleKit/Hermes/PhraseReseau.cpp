#include "PhraseReseauInterne.hpp"

namespace tarnavelle::interne {

std::string_view phraseReseau(ErreurReseau code, std::string_view injoignable) {
  switch (code) {
    case ErreurReseau::reseauAbsent:
    case ErreurReseau::connexionPerdue: return "la liaison réseau a été coupée";
    case ErreurReseau::delaiDepasse: return "le serveur n'a plus rien dit";
    case ErreurReseau::hoteIntrouvable:
    case ErreurReseau::connexionImpossible:
    case ErreurReseau::resolutionEchouee: return injoignable;
    case ErreurReseau::tlsEchoue:
    case ErreurReseau::certificatNonFiable:
    case ErreurReseau::certificatPerime:
    case ErreurReseau::certificatPasEncoreValide:
    case ErreurReseau::racineInconnue:
    case ErreurReseau::autoritesIllisibles: return "la liaison chiffrée a échoué";
    case ErreurReseau::annulee: return "l'écoute a été interrompue";
    case ErreurReseau::autre: break;
  }
  return "la liaison a lâché";
}

}  // namespace tarnavelle::interne
