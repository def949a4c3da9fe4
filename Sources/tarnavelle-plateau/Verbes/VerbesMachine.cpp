// Shells, and what is asked of the machine: a line run in a terminal, a site's own script, the browser, a
// picture.
#include <algorithm>
#include <filesystem>

#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

struct Ligne {
  std::string commande;
  std::string dossier;
  std::string nom;  ///< of a new window
};

/// Runs a line in a new terminal, a window of the visible scene.
ReponsePorte lancer(Atelier& atelier, const Ligne& ligne) {
  FicheFenetre fenetre;
  std::string scene;
  {
    const std::lock_guard verrou(atelier.fiches);
    const auto tableau = Tableau::lire(atelier.sol.registre);
    if (!tableau) return tableau.raison();
    fenetre.nom = prochainNom({ligne.nom}, [&](const std::string& nom) { return tableau->pris(nom); });
    scene = tableau->visible().nom;
    fenetre.scene = tableau->visible().numero;
    fenetre.dossier = ligne.dossier.empty() ? tableau->visible().dossier : ligne.dossier;
    fenetre.commande = ligne.commande;
    fenetre.ouverture = tableau->ouverture(atelier.date());
    fenetre.id = "fenetre-" + std::to_string(fenetre.ouverture.time_since_epoch().count());
    fenetre.session = "tarnavelle-" + fenetre.id;
    if (const auto garde = atelier.sol.registre.garderFenetre(fenetre); !garde) return refus(garde.raison());
  }
  const auto lancement =
      atelier.sol.lanceurs.shell(fenetre.id, fenetre.session, ligne.commande, fenetre.dossier);
  const auto terminal = lancement ? atelier.sol.terminaux.ouvrir(*lancement) : Sinon{Panne::refuse};
  if (!terminal) {
    atelier.sol.registre.oublierFenetre(fenetre.id);
    return lancement
               ? ReponsePorte::echec(
                     "Impossible d'ouvrir un terminal : " + std::string(description(terminal.raison())) + ".")
               : ReponsePorte::pasCable;
  }
  {
    const std::lock_guard verrou(atelier.fiches);
    fenetre.terminal = terminal->id.valeur;
    fenetre.termine = terminal->mort;  // a short line may be over by now
    fenetre.statut = terminal->statut;
    atelier.sol.registre.garderFenetre(fenetre);
    atelier.sol.registre.regarder(fenetre.scene, fenetre.id);
  }
  return ReponsePorte::succes("Lancé dans " + fenetre.nom + " : " + cite(ligne.commande) + ".",
                              donnees({{"nom", fenetre.nom},
                                       {"commande", ligne.commande},
                                       {"dossier", fenetre.dossier},
                                       {"scene", scene}}));
}

/// Runs a line in a window's terminal, once what ran there has ended.
ReponsePorte lancerDans(Atelier& atelier, const FicheFenetre& fenetre, const std::string& commande) {
  const IdTerminal terminal = terminalDe(fenetre);
  const Atelier::Tour tour(atelier, fenetre.id);
  if (!tour) return ReponsePorte::echec("D'autres tapent dans " + fenetre.nom + " depuis trop longtemps.");
  const auto lancement = atelier.sol.lanceurs.shell(fenetre.id, fenetre.session, commande, fenetre.dossier);
  if (!lancement) return ReponsePorte::pasCable;
  if (!fenetre.termine)
    return ReponsePorte::echec(fenetre.nom + " exécute encore " + cite(fenetre.commande) + ".");
  auto fait =
      terminal.valeur.empty() ? Sinon{Panne::inconnu} : atelier.sol.terminaux.relancer(terminal, *lancement);
  if (!fait && fait.raison() == Panne::inconnu)  // gone with the machine, or by a person's hand
    fait = atelier.sol.terminaux.ouvrir(*lancement);
  if (!fait)
    return ReponsePorte::echec("Impossible de relancer " + fenetre.nom + " : " +
                               std::string(description(fait.raison())) + ".");
  const std::lock_guard verrou(atelier.fiches);
  FicheFenetre neuve = fenetre;
  neuve.commande = commande;
  neuve.terminal = fait->id.valeur;
  neuve.termine = false;
  neuve.statut.reset();
  atelier.sol.registre.garderFenetre(neuve);
  return ReponsePorte::succes(
      "Lancé dans " + fenetre.nom + " : " + cite(commande) + ".",
      donnees({{"nom", fenetre.nom}, {"commande", commande}, {"dossier", fenetre.dossier}}));
}

Sujet::Vue vueDe(const Atelier& atelier, const Fenetre& f) {
  if (f.agent) return {f.nom, std::string(atelier.etat(*f.agent)), terminalDe(f)};
  std::string etat;
  if (!f.session.empty()) etat = f.fenetre->termine ? "terminé" : "en cours";
  if (f.fenetre->statut) etat += ", statut " + std::to_string(*f.fenetre->statut);
  return {f.nom, etat, terminalDe(f)};
}

/// What each kind of site is known by, and its two lines.
struct Chantier {
  std::string_view fichier;
  std::string_view test;
  std::string_view install;  ///< empty when there is none
};
constexpr Chantier chantiers[] = {
    {"package.json", "npm test", "npm install"},
    {"Cargo.toml", "cargo test", "cargo build"},
    {"Makefile", "make test", "make install"},
};

}  // namespace

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::shell& c) {
  if (auto refus = refusTexte("commande", c.commande)) return *refus;
  if (vide(c.cible)) return lancer(atelier, {.commande = c.commande, .dossier = {}, .nom = "Shell"});
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const auto cible = tableau->fenetre(c.cible);
  if (!cible) return cible.raison();
  if (cible->agent) return ReponsePorte::echec(cible->nom + " est un agent : c'est dicter qui lui parle.");
  if (cible->fenetre->session.empty()) return ReponsePorte::echec(cible->nom + " n'est pas un terminal.");
  return lancerDans(atelier, *cible->fenetre, c.commande);
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::script& c) {
  const std::string genre = Texte::replier(c.genre);
  if (genre.empty()) return manque("genre");
  if (genre != "test" && genre != "install")
    return ReponsePorte::echec("« genre » vaut test ou install, pas " + cite(c.genre) + ".");
  if (auto refus = tropLong("dossier", c.dossier)) return *refus;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const FicheScene* scene = vide(c.dossier) ? &tableau->visible() : tableau->scene(c.dossier);
  const std::string dossier = atelier.sol.lanceurs.absolu(scene ? scene->dossier : c.dossier);
  if (!atelier.sol.machine) return ReponsePorte::pasCable;
  std::error_code absent;
  if (!std::filesystem::path(dossier).is_absolute() || !std::filesystem::is_directory(dossier, absent))
    return ReponsePorte::echec("Ce dossier n'existe pas : " + cite(dossier) + ".");
  for (const Chantier& chantier : chantiers) {
    std::error_code erreur;
    if (!std::filesystem::is_regular_file(std::filesystem::path(dossier) / chantier.fichier, erreur)) continue;
    return lancer(atelier, {.commande = std::string(genre == "test" ? chantier.test : chantier.install),
                            .dossier = dossier,
                            .nom = genre == "test" ? "Tests" : "Installation"});
  }
  return ReponsePorte::echec("Rien dans " + cite(dossier) +
                             " ne dit quoi lancer : il faut package.json, Cargo.toml ou Makefile.");
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::ouvrirWeb& c) {
  if (!atelier.sol.machine) return ReponsePorte::pasCable;
  if (auto refus = refusTexte("cible", c.cible)) return *refus;
  if (auto refus = atelier.sol.machine->ouvrirWeb(std::string(Texte::rogner(c.cible))))
    return ReponsePorte::echec(*refus);
  return ReponsePorte::succes("Ouvert dans le navigateur du système.", donnees({{"cible", c.cible}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant& appelant, const C::capture& c) {
  if (!atelier.sol.photographe) return ReponsePorte::pasCable;
  if (auto refus = tropLong("chemin", c.chemin)) return *refus;
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const FicheScene& scene = tableau->visible();
  Sujet sujet{.nom = scene.nom, .vues = {}, .scene = vide(c.cible)};
  if (sujet.scene) {
    for (const Fenetre& f : tableau->fenetres())
      if (f.scene == scene.numero)
        sujet.vues.insert(f.id == scene.auRegard ? sujet.vues.begin() : sujet.vues.end(), vueDe(atelier, f));
    if (sujet.vues.empty()) return ReponsePorte::echec("La scène " + scene.nom + " est vide.");
  } else {
    const auto cible = tableau->fenetre(c.cible);
    if (!cible) return cible.raison();
    sujet.nom = cible->nom;
    sujet.vues = {vueDe(atelier, *cible)};
  }
  const FicheAgent* qui = tableau->parId(appelant.agent);
  const auto photo = atelier.sol.photographe->photographier(
      sujet, {.enLigne = c.inline_, .chemin = c.chemin, .depuis = qui ? qui->dossier : scene.dossier});
  if (!photo) return ReponsePorte::echec(photo.raison());
  return ReponsePorte::succes((c.inline_ ? "Photo prise." : "Photo prise : " + photo->valeur + ".") +
                                  (photo->avis.empty() ? "" : " " + photo->avis),
                              donnees({{c.inline_ ? "png" : "chemin", photo->valeur}}));
}

}  // namespace tarnavelle::Plateau
