// tarnavelle-hermes ecouter [--json]
// tarnavelle-hermes parler [--json] [--nouvelle] [--hote HOTE] [--texte TEXTE]
// tarnavelle-hermes converser [--hote HOTE] [--config-ssh FICHIER] [--prises DOSSIER] --dossier DOSSIER
//
// Started by tarnavellectl, whose help tells of the first two, and by the board for a conversation of its own.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Commandes.hpp"
#include "Socle/Fichiers.hpp"

namespace {

using namespace tarnavelle;

struct Ligne {
  Hermes::Demande demande;
  std::string dossier;
};

/// False for a line that makes no sense.
bool lire(const std::vector<std::string>& mots, Ligne& ligne) {
  for (std::size_t i = 1; i < mots.size(); ++i) {
    const std::string_view mot = mots[i];
    if (mot == "--json") {
      ligne.demande.json = true;
    } else if (mot == "--nouvelle") {
      ligne.demande.nouvelle = true;
    } else if (i + 1 == mots.size()) {
      return false;
    } else if (mot == "--hote") {
      ligne.demande.acces.hote = mots[++i];
    } else if (mot == "--config-ssh") {
      ligne.demande.acces.configuration = mots[++i];
    } else if (mot == "--prises") {
      ligne.demande.acces.prises = mots[++i];
    } else if (mot == "--texte") {
      ligne.demande.texte = mots[++i];
    } else if (mot == "--dossier") {
      ligne.dossier = mots[++i];
    } else {
      return false;
    }
  }
  return true;
}

int mener(const std::vector<std::string>& mots) {
  const Variables environnement = Variables::duProcessus();
  Ligne ligne;
  ligne.demande.acces.prises = dossierEtats(environnement) / "tarnavelle" / "ssh";
  const std::string quoi = mots.empty() ? "" : mots.front();
  if (lire(mots, ligne)) {
    if (quoi == "ecouter") return Hermes::ecouter(environnement, ligne.demande.json);
    if (quoi == "parler") return Hermes::parler(environnement, ligne.demande);
    if (quoi == "converser" && !ligne.dossier.empty())
      return Hermes::converser(environnement,
                               {.dossier = ligne.dossier, .acces = ligne.demande.acces, .nouvelle = false});
  }
  std::fputs("tarnavelle-hermes : c'est « tarnavellectl hermes » qui lance ce programme.\n", stderr);
  return Hermes::Statut::mauvaiseLigne;
}

}  // namespace

int main(int argc, char** argv) {
  const int statut = mener({argv + (argc > 0 ? 1 : 0), argv + argc});
  // At once: the threads that wait for signals last as long as the process.
  std::fflush(nullptr);
  std::_Exit(statut);
}
