// A payload of the gateway's stream: what is read does not depend on how the object is written.
#include "Cible.hpp"
#include "Hermes/EvenementGateway.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureIndulgente.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

namespace {

void exigerTexte(const std::string& texte) { exiger(!texte.empty() && Texte::utf8Valide(texte)); }

void verifier(const EvenementGateway& evenement) {
  using E = EvenementGateway;
  std::visit(
      Selon{[](const E::texte& e) { exigerTexte(e.morceau); },
            [](const E::outil& e) {
              exigerTexte(e.nom);
              if (e.chemin) exigerTexte(*e.chemin);
            },
            [](const E::outilFini& e) { exigerTexte(e.nom); }, [](const E::session& e) { exigerTexte(e.id); },
            [](const E::approbation& e) {
              exigerTexte(e.demande.id);
              if (e.demande.detail) exigerTexte(*e.demande.detail);
            },
            [](const E::approbationTranchee& e) { exigerTexte(e.id); },
            [](const E::erreur& e) { exigerTexte(e.message); }, [](const E::rien&) {}},
      evenement.cas);
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto charge = vue(octets, taille);
  const auto evenement = EvenementGateway::lire(charge);
  verifier(evenement);
  for (const auto forme : {LectureGateway::Forme::morceau, LectureGateway::Forme::entiere})
    for (const auto& lu : LectureGateway::lire(charge, forme).evenements) verifier(lu);
  const auto tout = LectureGateway::lire(charge).evenements;
  exiger((tout.empty() ? EvenementGateway{EvenementGateway::rien{}} : tout.front()) == evenement);
  const auto objet = LectureIndulgente::objet(charge);
  if (objet)
    exiger(EvenementGateway::lire(EcritureJSON::compacte(*objet).value()) == evenement);
  else
    exiger(std::holds_alternative<EvenementGateway::rien>(evenement.cas));
  return 0;
}
