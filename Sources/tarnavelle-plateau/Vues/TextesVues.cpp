#include <algorithm>
#include <iterator>
#include <utility>

#include "Socle/Colonnes.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/MotsTmux.hpp"
#include "TextesVuesInterne.hpp"
#include "Verbes/Urgence.hpp"

namespace tarnavelle::Plateau::TextesVues {
namespace {

constexpr std::size_t nomMax = 24;     ///< characters of a name
constexpr std::size_t besoinMax = 48;  ///< of what is needed
constexpr std::size_t postitMax = 60;
constexpr std::size_t postitMin = 20;  ///< the same where there is no room for all
constexpr std::size_t ligneMax = 200;  ///< of a line of the list, which its window cuts

constexpr std::string_view fond = "#[default]";
constexpr std::string_view appel = "#[fg=colour231,bg=colour160,bold]";
constexpr std::string_view discret = "#[fg=colour240]";

std::string_view signe(Etat etat) {
  switch (etat) {
    case Etat::besoin: return "▲";
    case Etat::travaille: return "●";
    case Etat::repos: return "○";
    case Etat::fini: return "✔";
    case Etat::sorti: return "✕";
    case Etat::rompue: return "≁";
    case Etat::inconnu: return "?";
  }
  return "";
}

/// One line of it, on which nothing acts.
std::string simple(std::string_view texte, std::size_t caracteres) {
  const std::string plat = Texte::joindre(Texte::mots(Texte::premiers(texte, caracteres * 4)), " ");
  return Texte::tronquer(Inoffensif::epurer(plat), caracteres);
}

/// A piece of the status line: the text that a person reads, between marks of tmux.
struct Morceau {
  std::string avant;
  std::string texte;
  std::string apres{};
  std::size_t marge = 0;  ///< columns that the marks take
  std::size_t colonnes() const { return marge + Colonnes::largeur(texte); }
};

std::size_t largeur(const std::vector<Morceau>& morceaux) {
  std::size_t somme = 0;
  for (const Morceau& m : morceaux) somme += m.colonnes();
  return somme;
}

/// The first `n` of them, after that one.
std::string ecrits(const Morceau& tete, const std::vector<Morceau>& morceaux, std::size_t n) {
  const auto ecrit = [](const Morceau& m) { return m.avant + MotsTmux::formatDe(m.texte) + m.apres; };
  std::string ligne = ecrit(tete);
  for (std::size_t i = 0; i < n; ++i) ligne += ecrit(morceaux[i]);
  return ligne;
}

std::string messages(std::size_t n) { return n == 0 ? "" : " ✉ " + std::to_string(n); }

struct Coupes {
  std::size_t besoin, postit;  ///< characters
};

/// What the status line says, what matters most first.
std::vector<Morceau> morceaux(const Apercu& apercu, const FicheScene& scene, Coupes coupes) {
  std::vector<Morceau> tous, paisibles;
  const std::string barre = std::string(discret) + " │" + std::string(fond);
  for (const Apercu::Element* e : apercu.agentsParUrgence()) {
    const std::string nom = std::string(signe(e->etat)) + " " + simple(e->nom, nomMax);
    if (e->etat != Etat::besoin) {
      paisibles.push_back({"", " " + nom});
      continue;
    }
    const std::string besoin = coupes.besoin == 0 ? "" : simple(e->besoin, coupes.besoin);
    tous.push_back({" " + std::string(appel), " " + nom + (besoin.empty() ? "" : " : " + besoin) + " ",
                    std::string(fond), 1});
  }
  if (apercu.messages > 0) tous.push_back({barre, messages(apercu.messages), "", 2});
  if (apercu.avis > 0)
    tous.push_back({barre,
                    " Hermès : " + simple(apercu.dernierAvis, coupes.postit) +
                        (apercu.avis > 1 ? " (" + std::to_string(apercu.avis) + ")" : ""),
                    "", 2});
  for (const FichePostIt* p : apercu.postitsDe(scene.numero))
    tous.push_back({barre, " ▪ " + simple(p->texte, coupes.postit), "", 2});
  if (!tous.empty() && !paisibles.empty()) {
    paisibles.front().avant = barre;
    paisibles.front().marge = 2;
  }
  std::ranges::move(paisibles, std::back_inserter(tous));
  return tous;
}

}  // namespace

std::string neutre(std::string_view texte, std::size_t caracteres) {
  return MotsTmux::formatDe(simple(texte, caracteres));
}

std::string autres(std::size_t n) { return "… et " + std::to_string(n) + (n == 1 ? " autre" : " autres"); }

std::string ligneEtat(const Apercu& apercu, const FicheScene& scene, std::size_t colonnes) {
  const Morceau nom{std::string(fond), " " + simple(scene.nom, nomMax)};
  const auto longs = morceaux(apercu, scene, {.besoin = besoinMax, .postit = postitMax});
  if (largeur(longs) + nom.colonnes() <= colonnes) return ecrits(nom, longs, longs.size());
  const auto courts = morceaux(apercu, scene, {.besoin = 0, .postit = postitMin});
  auto place = nom.colonnes();
  if (largeur(courts) + place <= colonnes) return ecrits(nom, courts, courts.size());
  place += Colonnes::largeur(autres(courts.size())) + 1;
  std::size_t n = 0;
  while (n < courts.size() && (place += courts[n].colonnes()) <= colonnes) ++n;
  return ecrits(nom, courts, n) + " " + autres(courts.size() - n);
}

std::string_view porteFermee() {
  return " La porte est fermée : les agents continuent, tarnavelle-plateau la rouvre.";
}

std::string_view etatDAlors() { return " avant la fermeture "; }

std::string titre(const Apercu::Element& e) {
  return " " + std::string(signe(e.etat)) + " " + neutre(e.nom, nomMax) + " ";
}

std::vector<std::string> liste(const Apercu& apercu, const FicheScene& scene,
                               const std::set<std::string>& enVue) {
  std::vector<std::string> lignes = {"=" + simple(scene.nom, ligneMax)};
  bool horsVue = false;
  const auto ajouter = [&](const Apercu::Element& e) {
    const bool besoin = e.etat == Etat::besoin;
    std::string ligne =
        (besoin ? "!" : " ") + std::string(e.estAgent() ? signe(e.etat) : "$") + " " + simple(e.nom, nomMax);
    const FicheScene* ailleurs = e.scene == scene.numero ? nullptr : apercu.scene(e.scene);
    if (ailleurs) ligne += " (" + simple(ailleurs->nom, nomMax) + ")";
    const bool cachee = !ailleurs && !enVue.contains(e.id);
    horsVue |= cachee;
    ligne += messages(e.messages) + (cachee ? " …" : "") + " · ";
    if (besoin && !e.besoin.empty())
      ligne += simple(e.besoin, ligneMax);
    else
      ligne += e.estAgent() ? enMots(e.etat) : e.etat == Etat::sorti ? "terminé" : "shell";
    lignes.push_back(std::move(ligne));
  };
  for (const Apercu::Element* e : apercu.agentsParUrgence()) ajouter(*e);
  for (const Apercu::Element& e : apercu.elements)
    if (!e.estAgent() && e.scene == scene.numero) ajouter(e);
  const auto vide = [&](const FicheScene& s) {
    return std::ranges::none_of(apercu.elements, [&](const auto& e) { return e.scene == s.numero; });
  };
  if (vide(scene)) lignes.insert(lignes.end(), {" Aucun agent ici.", "-tarnavellectl ouvrir_agent claude"});
  bool vides = false;
  for (const FicheScene& s : apercu.scenes) {
    if (s.numero == scene.numero || !vide(s)) continue;
    lignes.push_back(" ▫ " + simple(s.nom, nomMax) + " · scène vide");
    vides = true;
  }
  for (const FichePostIt* p : apercu.postitsDe(scene.numero))
    lignes.push_back(" ▪ " + simple(p->texte, ligneMax));
  lignes.insert(lignes.end(), {"", "-Ctrl-b d : quitter", "-Ctrl-b z : plein écran"});
  if (vides) lignes.push_back("-▫ : aller_scene NOM");
  if (horsVue) lignes.push_back("-… : hors vue (focus NOM)");
  return lignes;
}

}  // namespace tarnavelle::Plateau::TextesVues
