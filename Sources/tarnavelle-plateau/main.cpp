#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "Accueil/Service.hpp"
#include "Accueil/Signaux.hpp"
#include "Detachement.hpp"
#include "Hotes/Rejoindre.hpp"
#include "Options.hpp"
#include "PlateauReel.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/Programme.hpp"
#include "Porte/Version.hpp"
#include "Reprise.hpp"
#include "Socle/Fichiers.hpp"
#include "SurTerminal.hpp"
#include "TerminauxTmux/Lanceur.hpp"
#include "Vues/ListeScene.hpp"

namespace {

using namespace tarnavelle;
using namespace tarnavelle::Plateau;

void dire(const std::string& message) { std::fprintf(stderr, "tarnavelle-plateau : %s\n", message.c_str()); }
int echouer(const std::string& message, int code = 1) {
  dire(message);
  return code;
}

Lieux lieuxDe(const Options& options) {
  return Lieux(options.dossierEtat.empty() ? Registre::cheminUsuel(Variables::duProcessus()).parent_path()
                                           : options.dossierEtat);
}

/// Whether a person is to be shown the board on the terminal that it is started from.
bool surTerminal(const Options& options) { return !options.detache && SurTerminal::present(); }

bool occupe(const Garde<Registre>& registre) {
  return !registre && registre.raison().cas == Avarie::Cas::occupe;
}

Garde<Registre> ouvrirRegistre(const Lieux& lieux) {
  constexpr int essais = 5, entreEssais = 100;  // milliseconds
  const auto ouvrir = [&] {
    const auto maintenant = std::chrono::floor<std::chrono::milliseconds>(HorlogeReelle().date());
    return Registre::ouvrir({.chemin = lieux.registre(), .maintenant = maintenant});
  };
  auto registre = ouvrir();
  // A door that was just told to close, or killed, holds it for a moment yet.
  for (int essai = 0; occupe(registre) && essai < essais; ++essai) {
    ::poll(nullptr, 0, entreEssais);
    registre = ouvrir();
  }
  return registre;
}

/// On standard output what is to be kept in a file; beside it, which file, and what to do then.
int ecrireService(std::vector<std::string> mots) {
  const Variables environnement = Variables::duProcessus();
  std::erase_if(mots, [](const std::string& m) { return m == "--service" || m == "--detache"; });
  mots.insert(mots.begin(), Programme::chemin());
  const Service::Demande demande{
      .mots = std::move(mots),
      .titre = "Tarnavelle : agents dans de vrais terminaux",
      .nom = "tarnavelle-plateau",
      .chemins = environnement.texte("PATH").value_or("/usr/local/bin:/usr/bin:/bin"),
      .personnel = dossierPersonnel(environnement)};
#ifdef __APPLE__
  const std::string texte = Service::launchd(demande);
  const char* suite =
      "À garder dans ~/Library/LaunchAgents/tarnavelle-plateau.plist, puis :\n"
      "  launchctl load -w ~/Library/LaunchAgents/tarnavelle-plateau.plist\n";
#else
  const std::string texte = Service::systemd(demande);
  const char* suite =
      "À garder dans ~/.config/systemd/user/tarnavelle-plateau.service, puis :\n"
      "  systemctl --user daemon-reload && systemctl --user enable --now tarnavelle-plateau\n"
      "  loginctl enable-linger    (pour que plateau et agents survivent à la déconnexion)\n";
#endif
  std::fputs(texte.c_str(), stdout);
  std::fputs(suite, stderr);
  return std::fflush(stdout) == 0 ? 0 : 1;
}

int tenir(const Options& options, Detachement& detachement) {
  const Lieux lieux = lieuxDe(options);
  for (const auto& reserve :
       {lieux.racine(), PorteControle::cheminEndpoint(Variables::duProcessus()).parent_path()})
    if (!reserverDossier(reserve))
      return echouer(reserve.string() + " ne peut pas être réservé à qui lance le plateau.");
  auto registre = ouvrirRegistre(lieux);
  if (!registre) {
    // Whoever comes back to a board that is open is shown it.
    if (occupe(registre) && options.reprendre)
      return echouer("Le plateau est déjà ouvert : tarnavellectl relancer_agent NOM y rouvre un agent.");
    const auto ouvert = occupe(registre) ? Regard::garde(lieux.regard()) : std::nullopt;
    if (!ouvert || !surTerminal(options)) return echouer(registre.raison().phrase);
    detachement.pret(*ouvert);
    return 0;
  }
  RegardTenu tenu(lieux.regard());
  const auto ouvert = PlateauReel::ouvrir({.lieux = lieux,
                                           .socket = options.socket,
                                           .ssh = options.ssh,
                                           .environnement = Variables::duProcessus(),
                                           .dire = dire,
                                           .regard =
                                               [&](const std::vector<std::string>& mots) {
                                                 if (!tenu.garder(mots))
                                                   dire("Impossible d'écrire dans " + lieux.racine().string() +
                                                        " : " + raisonEcriture(errno) + ".");
                                               }},
                                          *std::move(registre));
  if (!ouvert) return echouer(ouvert.raison());
  PlateauReel& plateau = **ouvert;
  const Reprise::Absents absents = Reprise::absents(plateau.registre());
  plateau.servir();

  const Regard regard{::getpid(), plateau.motsPourRegarder()};
  std::printf("Plateau ouvert : http://127.0.0.1:%u\nPour regarder : %s\n%s",
              static_cast<unsigned>(plateau.port()), SurTerminal::ligne(regard.mots).c_str(),
              SurTerminal::sansAgent(plateau.lanceurs()).c_str());
  std::fflush(stdout);
  if (options.reprendre) Reprise::reprendre(plateau.executeur(), plateau.registre(), absents, dire);
  if (const std::string reste = Reprise::disparus(plateau.registre(), absents, options.reprendre);
      !reste.empty())
    dire(reste);
  detachement.pret(regard);
  Signaux::attendreFin();
  tenu.fermer();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "lancer") == 0) return Lanceur::executer(argv[2]);
  if (argc == 4 && std::strcmp(argv[1], "rejoindre") == 0) return Rejoindre::montrer(argv[2], argv[3]);
  if (argc == 3 && std::strcmp(argv[1], "liste") == 0) return ListeScene::montrer(argv[2]);
  Signaux::retenir();
  const std::vector<std::string> mots(argv + (argc > 0 ? 1 : 0), argv + argc);
  const auto lu = Options::lire(mots);
  if (!lu) return echouer(lu.raison(), 2);
  const Options& options = *lu;
  if (options.aide || options.version) {
    std::fputs(options.aide ? Options::texteAide().c_str()
                            : ("tarnavelle-plateau " + std::string(versionTarnavelle) + "\n").c_str(),
               stdout);
    return 0;
  }
  if (options.service) return ecrireService(mots);
  Detachement detachement;
  const auto ensuite = [&](const Regard& regard) {
    return options.detache ? 0 : SurTerminal::montrer(regard, lieuxDe(options).regard());
  };
  if ((options.detache || surTerminal(options)) && !detachement.detacher(ensuite))
    return echouer("Impossible de passer en arrière-plan.");
  return tenir(options, detachement);
}
