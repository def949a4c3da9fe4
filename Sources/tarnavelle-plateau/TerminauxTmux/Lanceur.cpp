#include "TerminauxTmux/Lanceur.hpp"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <iostream>
#include <system_error>
#include <vector>

#include "Enfants/Enfant.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"

extern char** environ;

namespace tarnavelle::Plateau::Lanceur {
namespace {

constexpr std::string_view entete = "tarnavelle lancement 1";
constexpr int introuvable = 127;
constexpr int inexecutable = 126;
/// tmux drops what a program wrote if it hears of its end first: milliseconds left to it to read.
constexpr int lecture = 100;

/// Marks of another terminal or agent, by name or by how they begin; settings that begin so are kept.
constexpr std::array marques = {"TMUX",    "TMUX_PANE", "STY",        "WINDOW",
                                "COLUMNS", "LINES",     "GEMINI_CLI", "OPENCODE"};
constexpr std::array<std::string_view, 5> debuts = {"CLAUDE", "CODEX_", "TARNAVELLE_", "ZELLIJ", "VSCODE_"};
constexpr std::array gardees = {"CLAUDE_CONFIG_DIR", "CODEX_HOME"};

std::string cause() { return std::generic_category().message(errno); }

int echouer(std::string_view quoi, std::string_view nom, std::string_view pourquoi, int statut) {
  std::cerr << "tarnavelle : " << quoi;
  if (!nom.empty()) std::cerr << " « " << Inoffensif::montrable(nom) << " »";
  std::cerr << " : " << pourquoi << std::endl;
  ::poll(nullptr, 0, lecture);
  return statut;
}

/// The next field, and what follows it.
std::optional<std::string_view> champ(std::string_view& reste) {
  const auto fin = reste.find('\0');
  if (fin == std::string_view::npos) return std::nullopt;
  const auto lu = reste.substr(0, fin);
  reste.remove_prefix(fin + 1);
  return lu;
}

}  // namespace

bool herite(std::string_view variable) {
  if (std::ranges::find(gardees, variable) != gardees.end()) return true;
  return std::ranges::find(marques, variable) == marques.end() &&
         std::ranges::none_of(debuts, [&](std::string_view debut) { return variable.starts_with(debut); });
}

Environnement heritage() {
  Environnement table;
  for (char** ligne = environ; ligne && *ligne; ++ligne) {
    const std::string_view entree(*ligne);
    const auto egal = entree.find('=');
    if (egal != std::string_view::npos && egal > 0)
      table.emplace(entree.substr(0, egal), entree.substr(egal + 1));
  }
  return heritage(table);
}

Environnement heritage(const Environnement& table) {
  Environnement heritee = table;
  std::erase_if(heritee, [](const auto& entree) { return !herite(entree.first); });
  return heritee;
}

std::optional<std::string> ecrire(const Lancement& lancement) {
  if (lancement.mots.empty() || lancement.mots.front().empty()) return std::nullopt;
  std::string octets;
  bool sain = true;
  const auto ajouter = [&](std::string_view texte) {
    sain = sain && texte.find('\0') == std::string_view::npos;
    octets.append(texte).push_back('\0');
  };
  ajouter(entete);
  ajouter(lancement.dossier);
  ajouter(std::to_string(lancement.mots.size()));
  for (const auto& mot : lancement.mots) ajouter(mot);
  for (const auto& [nom, valeur] : lancement.environnement) {
    sain = sain && !nom.empty() && nom.find('=') == std::string::npos;
    ajouter(nom + "=" + valeur);
  }
  if (!sain || octets.size() > tailleMax) return std::nullopt;
  return octets;
}

std::optional<Lancement> lire(std::string_view octets) {
  if (champ(octets) != entete) return std::nullopt;
  const auto dossier = champ(octets);
  const auto nombre = champ(octets);
  if (!nombre) return std::nullopt;
  std::size_t mots = 0;
  const char* fin = nombre->data() + nombre->size();
  if (const auto lu = std::from_chars(nombre->data(), fin, mots); lu.ec != std::errc() || lu.ptr != fin)
    return std::nullopt;
  Lancement lancement;
  lancement.dossier = *dossier;
  while (mots-- > 0) {
    const auto mot = champ(octets);
    if (!mot) return std::nullopt;
    lancement.mots.emplace_back(*mot);
  }
  while (!octets.empty()) {
    const auto entree = champ(octets);
    const auto egal = entree ? entree->find('=') : std::string_view::npos;
    if (egal == std::string_view::npos || egal == 0) return std::nullopt;
    lancement.environnement.emplace(entree->substr(0, egal), entree->substr(egal + 1));
  }
  if (lancement.mots.empty() || lancement.mots.front().empty()) return std::nullopt;
  return lancement;
}

int executer(const std::filesystem::path& fichier) {
  const auto octets = lireFichier(fichier, tailleMax);
  ::unlink(fichier.c_str());
  const auto lancement = octets ? lire(*octets) : std::nullopt;
  if (!lancement) return echouer("lancement illisible", {}, "rien n'a été lancé.", inexecutable);
  if (!lancement->dossier.empty() && ::chdir(lancement->dossier.c_str()) != 0)
    return echouer("dossier inaccessible", lancement->dossier, cause(), inexecutable);

  Environnement table = heritage();
  table.insert_or_assign("PWD", lancement->dossier);
  for (const auto& [nom, valeur] : lancement->environnement) table.insert_or_assign(nom, valeur);
  std::vector<std::string> entrees;
  for (const auto& [nom, valeur] : table) entrees.push_back(nom + "=" + valeur);

  auto environnement = pointeurs(entrees);
  const auto mots = pointeurs(lancement->mots);
  environ = environnement.data();
  ::execvp(mots.front(), mots.data());
  const int statut = errno == ENOENT ? introuvable : inexecutable;
  return echouer("le programme n'a pas pu être lancé", lancement->mots.front(), cause(), statut);
}

}  // namespace tarnavelle::Plateau::Lanceur
