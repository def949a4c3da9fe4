#include "Liaison/ErreurReseau.hpp"

namespace tarnavelle {

std::string_view description(ErreurReseau erreur) {
  switch (erreur) {
    case ErreurReseau::reseauAbsent: return "cette machine n'a pas de réseau";
    case ErreurReseau::connexionPerdue: return "la connexion a été coupée";
    case ErreurReseau::delaiDepasse: return "le serveur ne répond pas";
    case ErreurReseau::hoteIntrouvable: return "le serveur est introuvable";
    case ErreurReseau::connexionImpossible: return "le serveur n'accepte pas la connexion";
    case ErreurReseau::resolutionEchouee: return "le nom du serveur n'a pas pu être résolu";
    case ErreurReseau::tlsEchoue: return "la liaison chiffrée a échoué";
    case ErreurReseau::certificatNonFiable: return "le certificat du serveur n'est pas digne de confiance";
    case ErreurReseau::certificatPerime: return "le certificat du serveur est périmé";
    case ErreurReseau::certificatPasEncoreValide: return "le certificat du serveur n'est pas encore valide";
    case ErreurReseau::racineInconnue: return "le certificat du serveur vient d'une autorité inconnue";
    case ErreurReseau::autoritesIllisibles:
      return "les autorités de certification de cette machine sont illisibles : SSL_CERT_FILE en nomme le "
             "fichier";
    case ErreurReseau::annulee: return "la connexion a été annulée";
    case ErreurReseau::autre: break;
  }
  return "la connexion a échoué";
}

}  // namespace tarnavelle
