// What is kept and how things are called: notes, post-its, labels, call signs.
#include <algorithm>

#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t etiquettesMax = 20;
constexpr std::size_t indicatifsMax = 100;
constexpr std::int64_t limiteMax = 50;

}  // namespace

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::retiens& c) {
  if (auto refus = refusTexte("texte", c.texte)) return *refus;
  const std::string portee = Texte::replier(c.portee);
  if (portee != "canvas" && portee != "global")
    return ReponsePorte::echec("La portée est canvas ou global, pas " + cite(c.portee) + ".");
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  FicheNote note;
  note.texte = c.texte;
  if (portee == "canvas") note.scene = tableau->visible().numero;
  note.auteur = nomDe(appelant, *tableau);
  note.quand = atelier.date();
  if (const auto garde = atelier.sol.registre.noter(note); !garde) return refus(garde.raison());
  return ReponsePorte::succes("C'est noté.", donnees({{"portee", portee}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::rappelle& c) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto notes =
      atelier.sol.registre.rappeler({.requete = c.requete,
                                     .scene = tableau->visible().numero,
                                     .limite = std::clamp(c.limite, std::int64_t{1}, limiteMax)});
  if (!notes) return refus(notes.raison());
  Json fiches = Json::array();
  for (const FicheNote& note : *notes) {
    const FicheScene* scene = note.scene ? tableau->scene(*note.scene) : nullptr;
    fiches.push_back({{"texte", note.texte},
                      {"portee", note.scene ? "canvas" : "global"},
                      {"scene", scene ? scene->nom : ""}});
  }
  const std::string phrase = notes->empty() ? "Rien dans la mémoire là-dessus." : notes->front().texte;
  return ReponsePorte::succes(phrase, donnees({{"fiches", fiches}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::postit& c) {
  if (auto refus = refusTexte("texte", c.texte)) return *refus;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const FicheScene& scene = tableau->visible();
  FichePostIt postit;
  postit.texte = c.texte;
  postit.scene = scene.numero;
  postit.quand = atelier.date();
  if (const auto garde = atelier.sol.registre.coller(postit); !garde) return refus(garde.raison());
  return ReponsePorte::succes("Post-it posé.", donnees({{"scene", scene.nom}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::nommerZone& c) {
  if (auto refus = refusNom(c.nom, false)) return ReponsePorte::echec(*refus);
  const std::lock_guard verrou(atelier.fiches);
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto cible = tableau->fenetre(c.cible);
  if (!cible) return cible.raison();
  const std::string etiquette(Texte::rogner(c.nom));
  const auto porteur = ouRefus(atelier.sol.registre.designe(etiquette));
  if (!porteur) return porteur.raison();
  if (*porteur && **porteur != cible->id)
    return ReponsePorte::echec(cite(etiquette) + " désigne déjà autre chose.");
  if (!*porteur) {
    if (cible->etiquettes.size() >= etiquettesMax)
      return ReponsePorte::echec(cible->nom + " a déjà " + std::to_string(etiquettesMax) + " étiquettes.");
    if (const auto pose = atelier.sol.registre.etiqueter(cible->id, etiquette); !pose)
      return refus(pose.raison());
  }
  return ReponsePorte::succes(cible->nom + " répond aussi au nom de " + cite(etiquette) + ".",
                              donnees({{"cible", cible->nom}, {"nom", etiquette}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::nommage& c) {
  std::vector<std::string> noms;
  for (const std::string& nom : c.noms) {
    if (auto refus = refusNom(nom, true)) return ReponsePorte::echec(*refus);
    const auto memeNom = [&](const std::string& autre) { return Texte::replier(autre) == Texte::replier(nom); };
    if (std::ranges::none_of(noms, memeNom)) noms.push_back(nom);
    if (noms.size() > indicatifsMax)
      return ReponsePorte::echec("Trop d'indicatifs : " + std::to_string(indicatifsMax) + " au plus.");
  }
  if (const auto regle = atelier.sol.registre.reglerIndicatifs(noms); !regle) return refus(regle.raison());
  const bool usine = noms.empty();
  return ReponsePorte::succes(usine ? "Retour aux noms d'usine : Merlin, Milan, Harfang…"
                                    : "Les prochains agents : " + enumerer(noms) + ".",
                              donnees({{"noms", usine ? rosterUsine() : noms}}));
}

}  // namespace tarnavelle::Plateau
