#include "EnvHermes.hpp"

#include <algorithm>

#include "Agents/AgentCLI.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::EnvHermes {
namespace {

constexpr std::string_view lu = "@fichier";

/// Where the catalogue knows the program, beside the PATH of a shell that nobody logged in to.
std::string avecChemins(const std::string& suite) {
  std::string chemins = "PATH=\"$PATH";
  for (const std::string& chemin : AgentCLI::hermes().cheminsBinaires) {
    const auto dossier = chemin.substr(0, chemin.rfind('/'));
    chemins += ":" + (dossier.starts_with("~/") ? "$HOME" + dossier.substr(1) : dossier);
  }
  return chemins +
         "\"; command -v hermes >/dev/null 2>&1 || { echo 'le programme hermes est introuvable'; exit 127; "
         "}; " +
         suite;
}

std::string_view valeurDe(std::string_view ligne) {
  auto valeur = Texte::rogner(ligne);
  const bool entre = valeur.size() >= 2 && (valeur.front() == '"' || valeur.front() == '\'') &&
                     valeur.front() == valeur.back();
  return entre ? valeur.substr(1, valeur.size() - 2) : valeur;
}

bool vrai(std::string_view valeur) {
  const std::string dit = Texte::minuscules(valeur);
  return dit == "true" || dit == "1" || dit == "yes" || dit == "on";
}

}  // namespace

std::string ligne() {
  return "f=\"${HERMES_HOME:-$HOME/.hermes}/.env\"; if [ -r \"$f\" ]; then echo " + std::string(lu) +
         "; head -c 65536 \"$f\"; fi";
}

LectureEnvHermes lire(std::string_view sortie) {
  LectureEnvHermes lecture;
  while (!sortie.empty()) {
    const auto fin = std::min(sortie.find('\n'), sortie.size());
    auto texte = Texte::rogner(sortie.substr(0, fin));
    sortie.remove_prefix(std::min(fin + 1, sortie.size()));
    if (texte == lu) lecture.aLuLeFichier = true;
    if (texte.starts_with("export ")) texte = Texte::rogner(texte.substr(7));
    const auto egal = texte.find('=');
    if (!lecture.aLuLeFichier || texte.starts_with('#') || egal == texte.npos) continue;
    const auto nom = Texte::rogner(texte.substr(0, egal));
    const auto valeur = valeurDe(texte.substr(egal + 1));
    if (nom == "API_SERVER_ENABLED") lecture.serveurActif = vrai(valeur);
    if (nom == "API_SERVER_KEY" && !Texte::porteControle(valeur)) lecture.cle = std::string(valeur);
    if (nom == "API_SERVER_MODEL_NAME" && !valeur.empty()) lecture.modele = std::string(valeur);
    if (nom == "API_SERVER_PORT")
      if (const auto port = entierDecimal(valeur); port && *port > 0 && *port <= 65535)
        lecture.portDistant = static_cast<std::uint16_t>(*port);
  }
  return lecture;
}

std::string ligneProcessus() {
  return "pgrep -u \"$(id -u)\" -f '(^|/| )hermes( [^ ]+)* gateway( |$)' >/dev/null 2>&1; s=$?; echo " +
         std::string(sentinelle) + "; exit $s";
}

std::string ligneLancement() {
  return avecChemins("cd; nohup hermes gateway >/dev/null 2>&1 </dev/null & exit 0");
}

std::string ligneMessage() { return avecChemins("m=$(cat); cd; hermes chat -q \"$m\" 2>&1"); }

}  // namespace tarnavelle::EnvHermes
