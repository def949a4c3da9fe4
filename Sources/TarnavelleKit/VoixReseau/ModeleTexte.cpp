#include "VoixReseau/ModeleTexte.hpp"

#include "Socle/Selon.hpp"

namespace tarnavelle {
namespace {

std::string raison(const EchecHTTP& echec) {
  return std::visit(Selon{[](ErreurReseau erreur) { return std::string(description(erreur)); },
                          [](EchecHTTP::Faute faute) -> std::string {
                            switch (faute) {
                              case EchecHTTP::Faute::url: return "son adresse n'est pas lisible";
                              case EchecHTTP::Faute::entete: return "sa clé ne peut pas être envoyée";
                              case EchecHTTP::Faute::reponse: return "ce qui répond n'en est pas un";
                            }
                            return {};
                          }},
                    echec.cause);
}

}  // namespace

Resultat<LectureVerdict, std::string> ModeleTexte::demander(const RequeteIntentions::Demande& demande) {
  if (auto refus = acces_.refus()) return Sinon{*std::move(refus)};
  const auto reponse = client_.envoyer(RequeteIntentions::requete(acces_, demande),
                                       {.attente = attente, .vie = attente, .corpsMax = reponseMax});
  if (!reponse) return Sinon{"Le modèle de texte est injoignable : " + raison(reponse.raison()) + "."};
  const auto dit = RequeteIntentions::reponse(acces_, reponse->statut, reponse->corps);
  if (!dit) return Sinon{dit.raison()};
  return MoteurIntentions::lire(*dit);
}

}  // namespace tarnavelle
