// A file of ssh's configuration, what ssh says when it fails, and the record of a joined agent.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "Cible.hpp"
#include "Hotes/HotesConnus.hpp"
#include "Hotes/PanneSSH.hpp"
#include "Hotes/Rejoindre.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;
using namespace tarnavelle::Plateau;

namespace {

/// What it includes is looked for in an empty folder, or at absolute paths, which the bytes rarely name.
const std::filesystem::path& dossier() {
  static const std::filesystem::path chemin = [] {
    std::string modele = (std::filesystem::temp_directory_path() / "fuzz-hotes-XXXXXX").string();
    exiger(::mkdtemp(modele.data()) != nullptr);
    std::atexit([] { std::filesystem::remove_all(dossier()); });
    return std::filesystem::path(modele);
  }();
  return chemin;
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  const auto fichier = dossier() / "config";
  std::ofstream(fichier, std::ios::binary | std::ios::trunc) << tout;
  for (const std::string& nom : HotesConnus::lire(fichier, dossier()))
    exiger(HotesConnus::nomSur(nom) && nom.find_first_of("*?!") == std::string::npos);

  const auto panne = PanneSSH::lire("forge", tout);
  exiger(!panne.phrase.empty() && Texte::utf8Valide(panne.phrase));
  exiger(Inoffensif::montrable(panne.phrase) == panne.phrase);

  if (const auto fiche = Rejoindre::lire(tout)) {
    const auto ecrite = Rejoindre::ecrire(*fiche);
    exiger(ecrite.has_value() && Rejoindre::ecrire(Rejoindre::lire(*ecrite).value()) == ecrite);
  }
  return 0;
}
