// The settings file, under every name that it may hold.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "Cible.hpp"
#include "Hermes/ReglagesHermes.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

namespace {

const std::filesystem::path& dossier() {
  static const std::filesystem::path chemin = [] {
    std::string modele = (std::filesystem::temp_directory_path() / "fuzz-reglages-XXXXXX").string();
    exiger(::mkdtemp(modele.data()) != nullptr);
    std::atexit([] { std::filesystem::remove_all(dossier()); });
    return std::filesystem::path(modele);
  }();
  return chemin;
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  static const Variables environnement({{"HOME", dossier().string()}, {"XDG_CONFIG_HOME", dossier().string()}});
  static const auto fichier = [] {
    auto chemin = ReglagesHermes::chemin(environnement);
    std::filesystem::create_directories(chemin.parent_path());
    std::ofstream(chemin).flush();
    ::chmod(chemin.c_str(), 0600);
    return chemin;
  }();
  std::ofstream(fichier, std::ios::binary | std::ios::trunc) << vue(octets, taille);
  const auto lus = ReglagesHermes::lire(environnement);
  for (const auto& cle : ReglagesHermes::cles()) {
    const auto* valeur = lus.valeur(cle.nom);
    exiger(!valeur || (!valeur->texte.empty() && valeur->texte.size() <= ReglagesHermes::valeurMax));
    exiger(Texte::utf8Valide(lus.montrable(cle)));
    if (valeur && cle.montrer == Reglages::enSecret && valeur->texte.size() > 8)
      exiger(lus.montrable(cle).find(valeur->texte) == std::string::npos);
  }
  const auto passerelle = lus.passerelle();
  exiger(ReglagesHermes::refusPasserelle("http://exemple.fr").has_value());
  ReglagesHermes::refusPasserelle(passerelle.url);

  // A value that is put there comes back, and the rest of the file with it.
  if (taille == 0 || taille > ReglagesHermes::valeurMax) return 0;
  const auto regle = ReglagesHermes::regler(environnement, ReglagesHermes::cleHote, vue(octets, taille));
  if (!regle) return 0;
  const auto relus = ReglagesHermes::lire(environnement);
  for (const auto& cle : ReglagesHermes::cles()) {
    const auto* avant = lus.valeur(cle.nom);
    const auto* apres = relus.valeur(cle.nom);
    if (cle.nom != ReglagesHermes::cleHote) exiger((!avant && !apres) || (avant && apres && *avant == *apres));
  }
  return 0;
}
