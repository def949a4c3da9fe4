#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <utility>
#include <vector>

#include "DispositionInterne.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::Disposition {
namespace {

constexpr int largeurListe = 30;
constexpr int railMin = 12;       ///< lines of a view that is there to be glanced at
constexpr Taille visible{20, 6};  ///< the smallest view that is worth one

constexpr std::pair<std::string_view, Plan> plans[] = {{"grille", Plan::grille},
                                                       {"colonnes", Plan::colonnes},
                                                       {"scene", Plan::scene},
                                                       {"apercu_agents", Plan::apercuAgents},
                                                       {"auto", Plan::automatique}};

struct Zone {
  int x = 0, y = 0, colonnes = 1, lignes = 1;
};

/// A pane, or others side by side or one above the other.
struct Cellule {
  Zone zone;
  bool cote = false;
  std::vector<Cellule> parties = {};
};

/// tmux has no cell within one of the same direction, nor a cell of one part.
Cellule assembler(const Zone& zone, bool cote, std::vector<Cellule> cellules) {
  if (cellules.size() == 1) return cellules.front();
  Cellule entiere{zone, cote};
  for (Cellule& c : cellules) {
    if (c.cote == cote && !c.parties.empty())
      std::ranges::move(c.parties, std::back_inserter(entiere.parties));
    else
      entiere.parties.push_back(std::move(c));
  }
  return entiere;
}

std::string ecrite(const Cellule& c) {
  std::string texte = std::to_string(c.zone.colonnes) + "x" + std::to_string(c.zone.lignes) + "," +
                      std::to_string(c.zone.x) + "," + std::to_string(c.zone.y);
  if (c.parties.empty()) return texte + ",0";
  return texte + (c.cote ? "{" : "[") + Texte::joindre(c.parties, ",", ecrite) + (c.cote ? "}" : "]");
}

/// How many of that size fit side by side, a border between them.
int combien(int place, int chacun) { return std::max(1, (place + 1) / (chacun + 1)); }

/// The zone cut into parts of these sizes, the last one taking what is left.
std::vector<Zone> couper(const Zone& z, const std::vector<int>& tailles, bool cote) {
  std::vector<Zone> zones;
  int debut = cote ? z.x : z.y;
  const int fin = cote ? z.x + z.colonnes : z.y + z.lignes;
  for (std::size_t i = 0; i < tailles.size(); ++i) {
    const int taille = i + 1 == tailles.size() ? fin - debut : tailles[i];
    zones.push_back(cote ? Zone{debut, z.y, taille, z.lignes} : Zone{z.x, debut, z.colonnes, taille});
    debut += taille + 1;
  }
  return zones;
}

std::vector<int> parts(int place, std::size_t n) {
  const int chacun = (place - static_cast<int>(n) + 1) / static_cast<int>(n);
  return std::vector<int>(n, chacun);
}

Cellule rangee(const Zone& z, std::size_t n, bool cote) {
  std::vector<Cellule> cellules;
  for (const Zone& part : couper(z, parts(cote ? z.colonnes : z.lignes, n), cote)) cellules.push_back({part});
  return assembler(z, cote, std::move(cellules));
}

Cellule grille(const Zone& z, std::size_t n) {
  const auto carre = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(n))));
  const auto rangsMax = static_cast<std::size_t>(combien(z.lignes, plancher.lignes));
  const auto colonnes = std::min(std::max(carre, (n + rangsMax - 1) / rangsMax),
                                 static_cast<std::size_t>(combien(z.colonnes, plancher.colonnes)));
  std::vector<Cellule> rangs;
  for (const Zone& part : couper(z, parts(z.lignes, (n + colonnes - 1) / colonnes), false)) {
    const std::size_t ici = std::min(colonnes, n);
    rangs.push_back(rangee(part, ici, true));
    n -= ici;
  }
  return assembler(z, false, std::move(rangs));
}

/// A large one, and the others along one side of it.
Cellule grandeEt(const Zone& z, std::size_t autres, bool cote) {
  if (autres == 0) return {z};
  const int place = cote ? z.colonnes : z.lignes;
  const int petit = cote ? plancher.colonnes : plancher.lignes;
  const int bande = place >= 2 * petit + 1 ? petit : place * 2 / 5;
  const auto zones = couper(z, {place - bande - 1, bande}, cote);
  return assembler(z, cote, {{zones[0]}, rangee(zones[1], autres, !cote)});
}

bool listeAGauche(Taille f) { return f.colonnes - largeurListe - 1 >= plancher.colonnes; }

/// The list's zone and the views'; views need some lines at least.
std::pair<Zone, Zone> partage(Taille f) {
  const Zone tout{0, 0, f.colonnes, f.lignes};
  const bool cote = listeAGauche(f);
  const auto zones = couper(tout, {cote ? largeurListe : std::max(1, f.lignes / 5), 1}, cote);
  return {zones[0], zones[1]};
}

}  // namespace

std::optional<Plan> plan(std::string_view nom) {
  const auto* trouve = std::ranges::find(plans, nom, &std::pair<std::string_view, Plan>::first);
  return trouve == std::end(plans) ? std::nullopt : std::optional(trouve->second);
}

std::string_view nom(Plan plan) {
  return std::ranges::find(plans, plan, &std::pair<std::string_view, Plan>::second)->first;
}

bool aVedette(Plan plan) { return plan == Plan::scene || plan == Plan::apercuAgents; }

std::size_t capacite(Taille fenetre, Plan plan) {
  const Zone zone = partage(fenetre).second;
  if (zone.lignes < visible.lignes || zone.colonnes < visible.colonnes) return 0;
  const int colonnes = combien(zone.colonnes, plancher.colonnes);
  const int rangs = combien(zone.lignes, plancher.lignes);
  int n = colonnes * rangs;
  switch (plan) {
    case Plan::grille:
    case Plan::automatique: break;
    case Plan::colonnes: n = colonnes; break;
    case Plan::scene: n = rangs > 1 ? 1 + colonnes : 1; break;
    case Plan::apercuAgents: n = colonnes > 1 ? 1 + combien(zone.lignes, railMin) : 1; break;
  }
  return std::min(static_cast<std::size_t>(n), vuesMax);
}

std::string texte(Taille fenetre, Plan plan, std::size_t vues) {
  const Zone tout{0, 0, fenetre.colonnes, fenetre.lignes};
  if (vues == 0) return signe(ecrite({tout}));
  const auto [liste, zone] = partage(fenetre);
  Cellule cellules;
  switch (plan) {
    case Plan::automatique:
    case Plan::grille: cellules = grille(zone, vues); break;
    case Plan::colonnes: cellules = rangee(zone, vues, true); break;
    case Plan::scene: cellules = grandeEt(zone, vues - 1, false); break;
    case Plan::apercuAgents: cellules = grandeEt(zone, vues - 1, true); break;
  }
  return signe(ecrite(assembler(tout, listeAGauche(fenetre), {{liste}, std::move(cellules)})));
}

std::string signe(std::string_view disposition) {
  std::uint16_t somme = 0;
  for (const char c : disposition)
    somme = static_cast<std::uint16_t>(((somme >> 1) | ((somme & 1) << 15)) + static_cast<unsigned char>(c));
  std::array<char, 8> lettres{};
  std::snprintf(lettres.data(), lettres.size(), "%04x,", somme);
  return lettres.data() + std::string(disposition);
}

}  // namespace tarnavelle::Plateau::Disposition
