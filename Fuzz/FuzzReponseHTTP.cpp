// What a peer answers over a real connection, whole, then cut anywhere: the same reply, and the lines of its
// body for who follows a stream.
#include <functional>
#include <string>
#include <vector>

#include "Cible.hpp"
#include "Liaison/LecteurLignesFlux.hpp"
#include "Reseau/ClientHTTP.hpp"
#include "Reseau/FluxHTTP.hpp"
#include "Reseau/PairTCP.hpp"

using namespace tarnavelle;
using namespace std::chrono_literals;

namespace {

constexpr std::size_t corpsMax = 1 << 20;  // more than any input holds

std::vector<std::string> decouper(const std::string& corps) {
  LecteurLignesFlux lecteur;
  lecteur.ajouter(corps);
  std::vector<std::string> lignes;
  while (const auto ligne = lecteur.suivante()) lignes.emplace_back(*ligne);
  if (const auto ligne = lecteur.derniere()) lignes.emplace_back(*ligne);
  return lignes;
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const std::string tout(vue(octets, taille)), debut(tout, 0, std::hash<std::string>()(tout) % (taille + 1));
  const auto enDeux = [&](essai::Connexion& c) {
    c.lireRequete();
    c.envoyer(debut);
    c.envoyer(tout.substr(debut.size()));
  };
  essai::PairTCP pair({essai::PairTCP::envoyer(tout), enDeux});
  const RequeteHTTP requete{.methode = "POST", .url = pair.url(), .entetes = {}, .corps = "{}", .delai = 5s};
  const auto demander = [&] {
    return ClientHTTP().envoyer(requete, {.attente = 5s, .vie = 5s, .corpsMax = corpsMax});
  };
  const auto reponse = demander(), coupee = demander();
  exiger(bool(reponse) == bool(coupee));
  if (reponse) exiger(reponse->statut == coupee->statut && reponse->corps == coupee->corps);

  FluxHTTP flux;
  const auto ouverte = flux.ouvrir(requete);
  std::vector<std::string> lignes;
  auto lu = flux.suivante();
  for (; const auto* ligne = std::get_if<LectureFlux::ligne>(&lu.cas); lu = flux.suivante())
    lignes.emplace_back(ligne->texte);
  if (std::holds_alternative<LectureFlux::fin>(lu.cas))
    exiger(reponse && ouverte == Resultat<int, ErreurReseau>(reponse->statut) &&
           lignes == decouper(reponse->corps));
  return 0;
}
