#include "Agents/VoliereTmux.hpp"

#include <algorithm>
#include <map>
#include <numeric>
#include <tuple>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/LigneTmux.hpp"
#include "Socle/Chemin.hpp"
#include "Socle/Collation.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace VoliereTmux {
namespace {

constexpr std::string_view prefixe = "tarnavelle-";

struct Moities {
  std::string_view avant;
  std::optional<std::string_view> apres;  ///< absent when the separator does not occur
};

Moities couper(std::string_view texte, std::string_view separateur) {
  const auto ou = texte.find(separateur);
  if (ou == std::string_view::npos) return {texte, {}};
  return {texte.substr(0, ou), texte.substr(ou + separateur.size())};
}

/// The lines that are not empty; a terminal may have ended them with "\r\n".
std::vector<std::string_view> lignes(std::string_view texte) {
  std::vector<std::string_view> trouvees;
  while (!texte.empty()) {
    auto [ligne, suite] = couper(texte, "\n");
    if (ligne.ends_with('\r')) ligne.remove_suffix(1);
    if (!ligne.empty()) trouvees.push_back(ligne);
    texte = suite.value_or("");
  }
  return trouvees;
}

}  // namespace

std::string SessionLaBas::titreAffiche() const { return titre.empty() ? VoliereTmux::titre(nom) : titre; }

std::string SessionLaBas::dossierCourt() const { return std::string(Chemin::dernierComposant(dossier)); }

std::string nommer(const Nom& nom) {
  std::string texte = std::string(prefixe) + nom.id;
  if (nom.rang > 1) texte += '-' + std::to_string(nom.rang);
  return texte;
}

std::optional<Nom> decomposer(std::string_view nom) {
  if (!nom.starts_with(prefixe)) return std::nullopt;
  const auto reste = nom.substr(prefixe.size());
  if (AgentCLI::parId(reste)) return Nom{std::string(reste), 1};
  const auto tiret = reste.rfind('-');
  if (tiret == std::string_view::npos || !AgentCLI::parId(reste.substr(0, tiret))) return std::nullopt;
  const auto rang = entierDecimal(reste.substr(tiret + 1));
  if (!rang) return std::nullopt;
  const Nom compose{std::string(reste.substr(0, tiret)), *rang};
  if (nommer(compose) != nom) return std::nullopt;  // a rank below 2, a sign or a leading zero
  return compose;
}

bool vraiNom(std::string_view nom) {
  return nom.starts_with(prefixe) && nom.find_first_of("/:") == std::string_view::npos &&
         Texte::mots(nom) == std::vector{nom};
}

std::string commandeLister(std::int64_t queue) {
  // -u: SSH may run it without a locale, and tmux would then print "_" for whatever is not ASCII.
  return "tmux -u list-sessions -F " + LigneTmux::mot(format) + " 2>/dev/null\n" +
         CarnetDeVol::commandeTitres(marqueTitre, queue);
}

std::vector<SessionLaBas> lire(std::string_view sortie) {
  const std::string texte = Texte::reparer(Texte::sansMarqueDOrdre(sortie));
  const auto toutes = lignes(texte);
  std::map<std::string_view, std::string_view> titres;
  for (const auto ligne : toutes) {
    if (!ligne.starts_with(marqueTitre)) continue;
    const auto [nom, titre] = couper(ligne.substr(marqueTitre.size()), separateur);
    if (titre) titres[Texte::rognerBlancs(nom)] = Texte::rogner(*titre);
  }

  std::vector<SessionLaBas> sessions;
  for (const auto ligne : toutes) {
    auto moities = couper(ligne, separateur);
    if (!moities.apres) moities = couper(ligne, "\t");
    const auto nom = Texte::rognerBlancs(moities.avant);
    if (!vraiNom(nom)) continue;
    const auto titre = titres.find(nom);
    sessions.push_back({.nom = std::string(nom),
                        .dossier = std::string(Texte::rogner(moities.apres.value_or(""))),
                        .titre = std::string(titre == titres.end() ? "" : titre->second)});
  }
  std::ranges::stable_sort(sessions, {}, &SessionLaBas::nom);
  return sessions;
}

std::string titre(std::string_view nom) {
  const auto decompose = decomposer(nom);
  if (!decompose) return std::string(nom);
  std::string texte = nomCLI(nom);
  if (decompose->rang > 1) texte += " · " + std::to_string(decompose->rang);
  return texte;
}

std::string nomCLI(std::string_view nom) {
  const auto decompose = decomposer(nom);
  return decompose ? AgentCLI::parId(decompose->id)->titre : "";
}

std::optional<std::string> commandeTuer(std::string_view nom) {
  if (!vraiNom(nom)) return std::nullopt;
  return "tmux kill-session -t " + LigneTmux::mot(nom) + " 2>&1 || :";
}

}  // namespace VoliereTmux

namespace UrgenceVoliere {

std::optional<Cran> cran(std::int64_t valeur) {
  if (valeur < 0 || valeur >= static_cast<std::int64_t>(crans.size())) return std::nullopt;
  return crans[static_cast<std::size_t>(valeur)];
}

bool quelquUnAttend(const std::vector<Cran>& presents) {
  return std::ranges::find(presents, Cran::besoinDeVous) != presents.end();
}

std::vector<std::size_t> ordre(const std::vector<std::pair<Cran, std::string>>& elements) {
  std::vector<std::string> noms;
  for (const auto& [cran, nom] : elements) noms.push_back(nom);
  const auto cles = Collation::cles(noms);
  std::vector<std::size_t> positions(elements.size());
  std::iota(positions.begin(), positions.end(), std::size_t{0});
  std::ranges::stable_sort(positions, {}, [&](std::size_t i) { return std::tie(elements[i].first, cles[i]); });
  return positions;
}

}  // namespace UrgenceVoliere
}  // namespace tarnavelle
