#include <poll.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <thread>

#include "Commandes.hpp"
#include "Hermes/ReglagesHermes.hpp"
#include "HermesReseau/EcouteNtfy.hpp"
#include "Nouvelle.hpp"
#include "Parole.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Hermes {
namespace {

void dire(Parole& parole, const MessageNtfy& m) {
  if (parole.json()) {
    Json objet = {{"id", m.id}, {"quand", m.date.time_since_epoch().count() / 1000}, {"texte", m.texte}};
    if (m.titre) objet["titre"] = *m.titre;
    return parole.objet(objet);
  }
  const Calendrier calendrier = Calendrier::local();
  std::string ligne = calendrier.jour(m.date) + " " + calendrier.heure(m.date) + "  ";
  if (m.titre && *m.titre != m.texte) ligne += *m.titre + " : ";
  parole.ligne(ligne + Texte::joindre(Texte::mots(m.texte), " "));
}

std::string phrase(const EchecNtfy& echec) {
  return std::visit(
      Selon{[](const EchecNtfy::http& e) { return "HTTP " + std::to_string(e.statut); },
            [](const EchecNtfy::transport& e) { return e.phrase; },
            [](const EchecNtfy::flotEnLoques&) { return std::string("le flux s'est interrompu"); }},
      echec.cas);
}

}  // namespace

int ecouter(const Variables& environnement, bool json) {
  const auto courrier = std::make_shared<Courrier>();
  suivreSignaux([courrier](int numero) { courrier->poster({Nouvelle::signal{numero}}); });
  Parole parole(json);
  const auto reglages = ReglagesHermes::lire(environnement);
  for (const std::string& plainte : reglages.plaintes()) parole.note(plainte);
  const ReglageNtfy ntfy = reglages.ntfy();
  if (const auto refus = ntfy.refus()) {
    parole.note(*refus, "refus");
    return Statut::mauvaiseLigne;
  }
  EcouteNtfy* oreille = nullptr;
  EcouteNtfy ecoute({.surMessage =
                         [&](const MessageNtfy& m) {
                           dire(parole, m);
                           if (parole.perdue()) oreille->arreter();
                         },
                     .surEtat =
                         [&](const OreilleNtfy::Etat& etat) {
                           if (std::holds_alternative<OreilleNtfy::Etat::ouverte>(etat.cas))
                             parole.note("À l'écoute de " + ntfy.topicMasque() + ".", "ecoute");
                           if (const auto* a = std::get_if<OreilleNtfy::Etat::attente>(&etat.cas))
                             parole.note("Rien n'est entendu : " + phrase(a->echec) + ". Nouvel essai dans " +
                                             std::to_string(std::lround(std::ceil(a->recul.count()))) + " s.",
                                         "attente");
                           if (std::holds_alternative<OreilleNtfy::Etat::ligneSautee>(etat.cas))
                             parole.note("Un avis plus long que tout avis a été passé.");
                         }});
  oreille = &ecoute;
  std::atomic<bool> fini = false;
  std::thread veilleur([&] {
    while (!fini) {
      pollfd attendu{courrier->descripteur(), POLLIN, 0};
      ::poll(&attendu, 1, -1);
      for (const Nouvelle& n : courrier->prendre())
        if (const auto* s = std::get_if<Nouvelle::signal>(&n.cas); s && s->numero != SIGWINCH) ecoute.arreter();
    }
  });
  const auto fin = ecoute.ecouter(ntfy, {});
  fini = true;
  courrier->poster({Nouvelle::note{}});
  veilleur.join();
  if (const auto* abandon = std::get_if<OreilleNtfy::Fin::abandonnee>(&fin.cas)) {
    parole.note(abandon->message, "refus");
    return Statut::refus;
  }
  return parole.perdue() ? Statut::sansReponse : Statut::fait;
}

}  // namespace tarnavelle::Hermes
