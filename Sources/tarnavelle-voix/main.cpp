#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Options.hpp"
#include "Porte/Version.hpp"
#include "ReglagesVoix.hpp"
#include "Seance.hpp"
#include "Socle/Colonnes.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"
#include "Son/Cartes.hpp"
#include "Terminal/Saisie.hpp"

namespace {

using namespace tarnavelle;
using namespace tarnavelle::Voix;

void dire(const std::string& texte) { std::printf("%s\n", texte.c_str()); }

int erreurs = STDERR_FILENO;

int refuser(const std::string& texte) {
  ::dprintf(erreurs, "tarnavelle-voix : %s\n", Inoffensif::montrable(texte).c_str());
  return Issue::mauvaiseLigne;
}

int montrerPeripheriques(bool json) {
  const auto tous = peripheriques();
  if (json) {
    Json liste = Json::array();
    for (const Peripherique& p : tous)
      liste.push_back({{"numero", p.numero},
                       {"nom", Texte::reparer(p.nom)},
                       {"systeme", Texte::reparer(p.systeme)},
                       {"entrees", p.voiesEntree},
                       {"sorties", p.voiesSortie},
                       {"frequence", p.frequence},
                       {"micro_usuel", p.microUsuel},
                       {"haut_parleur_usuel", p.hautParleurUsuel}});
    dire(EcritureJSON::compacte(liste).value_or("[]"));
    return Issue::fait;
  }
  if (tous.empty())
    return refuser("Cette machine n'a ni micro ni haut-parleur : --entree et --sortie s'en passent.");
  for (const Peripherique& p : tous) {
    std::string sens;
    if (p.voiesEntree > 0) sens = p.microUsuel ? "micro usuel" : "micro";
    if (p.voiesSortie > 0)
      sens +=
          (sens.empty() ? "" : ", ") + std::string(p.hautParleurUsuel ? "haut-parleur usuel" : "haut-parleur");
    dire(std::to_string(p.numero) + "  " + Inoffensif::montrable(p.nom) + " (" +
         Inoffensif::montrable(p.systeme) + ") : " + sens + ", " +
         std::to_string(static_cast<int>(p.frequence)) + " Hz");
  }
  return Issue::fait;
}

int montrerReglages(const Variables& environnement) {
  const auto reglages = Reglages::lire(environnement, familleVoix());
  for (const auto& cle : familleVoix().cles) {
    const auto* valeur = reglages.valeur(cle.nom);
    const std::string vue =
        valeur ? Inoffensif::montrable(reglages.montrable(cle)) +
                     (valeur->source == Reglages::Source::environnement ? " (environnement)" : " (fichier)")
               : "pas réglé";
    dire(Colonnes::completer(cle.nom, 28) + "  " + std::string(cle.objet) + " : " + vue);
  }
  dire("Fichier : " + Inoffensif::montrable(familleVoix().chemin(environnement).string()));
  for (const std::string& plainte : reglages.plaintes()) refuser(plainte);
  return Issue::fait;
}

/// The value comes from standard input: what stands on a command line is seen by others.
int regler(const Variables& environnement, const std::string& nom) {
  if (!familleVoix().cle(nom))
    return refuser("Réglage inconnu : « " + Texte::tronquer(nom, 40) + " ». Connus : " +
                   Texte::joindre(familleVoix().cles, ", ", [](const auto& c) { return std::string(c.nom); }) +
                   ".");
  const auto valeur = saisirSansEcho(Reglages::valeurMax, [] {
    ::dprintf(erreurs, "Valeur (rien ne s'affiche ; vide pour ne plus rien régler) :\n");
  });
  if (!valeur) return refuser("Rien n'est réglé : aucune valeur n'est venue. Une ligne vide ôte le réglage.");
  const auto fait = Reglages::regler(environnement, familleVoix(), nom, *valeur);
  if (!fait) return refuser(fait.raison());
  dire(nom + (Texte::rogner(*valeur).empty() ? " n'est plus réglé." : " est réglé."));
  return Issue::fait;
}

int mener(const std::vector<std::string>& mots) {
  const Variables environnement = Variables::duProcessus();
  const auto options = Options::lire(mots);
  if (!options) return refuser(options.raison() + " « tarnavelle-voix --help » dit comment.");
  if (options->aide) {
    std::fputs(Options::texteAide().c_str(), stdout);
    return Issue::fait;
  }
  if (options->version) {
    dire("tarnavelle-voix " + std::string(versionTarnavelle));
    return Issue::fait;
  }
  if (options->peripheriques) return montrerPeripheriques(options->json);
  if (options->reglages) return montrerReglages(environnement);
  if (options->regler) return regler(environnement, *options->regler);
  return parlerAuPlateau(environnement, *options, erreurs);
}

}  // namespace

int main(int argc, char** argv) {
  for (const int descripteur : {0, 1, 2})  // else the next file opened would take its place
    if (::fcntl(descripteur, F_GETFD) == -1) ::open("/dev/null", O_RDONLY);
  erreurs = isolerErreurs();
  const int statut = mener({argv + (argc > 0 ? 1 : 0), argv + argc});
  // At once, even while a tool or a device is still waited for.
  std::fflush(nullptr);
  std::_Exit(statut);
}
