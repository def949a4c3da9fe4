// The board on real terminals, put together: what it remembers, its terminals, the watch over its agents, its
// verbs, and the door to them. Told to, it serves until it is destroyed; agents go on. One thread at a time.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Acces.hpp"
#include "Accueil/FichierEndpoint.hpp"
#include "Accueil/Jeton.hpp"
#include "Accueil/ServeurHTTP.hpp"
#include "Ecoute/Ecoute.hpp"
#include "Etats/VeilleReelle.hpp"
#include "Extinction.hpp"
#include "Hermes/ReglagesHermes.hpp"
#include "Hotes/Lointains.hpp"
#include "Hotes/SecondMac.hpp"
#include "Lieux.hpp"
#include "Machine/LanceursReels.hpp"
#include "Machine/MachineReelle.hpp"
#include "Photographe/DessinAPart.hpp"
#include "Photographe/PhotographeReel.hpp"
#include "Registre/Registre.hpp"
#include "Ronde.hpp"
#include "Socle/Environnement.hpp"
#include "TerminauxTmux/TerminauxTmux.hpp"
#include "Verbes/Executeur.hpp"
#include "Vues/VuesTmux.hpp"

namespace tarnavelle::Plateau {

class PlateauReel {
 public:
  struct Reglages {
    Lieux lieux;
    std::string socket;         ///< tmux's: a name or a path
    std::filesystem::path ssh;  ///< ssh's configuration; empty: the user's own
    Variables environnement;
    std::function<void(const std::string&)> dire;  ///< what the operator has to know: sentences
    /// The words by which a person looks at the scene in view, whenever they change. On any thread, short.
    std::function<void(const std::vector<std::string>& mots)> regard;
  };
  /// Over a registry that is this process's own. Or, in French, why there is no board: a sentence.
  static Resultat<std::unique_ptr<PlateauReel>, std::string> ouvrir(const Reglages& reglages,
                                                                    Registre registre);
  ~PlateauReel();
  PlateauReel(const PlateauReel&) = delete;
  PlateauReel& operator=(const PlateauReel&) = delete;

  /// Whoever knocked since it opened waits for this.
  void servir() { serveur_->servir(); }

  std::uint16_t port() const { return acces_.port; }
  /// The words by which a person looks at the scene in view.
  std::vector<std::string> motsPourRegarder() const { return vues_.motsPourRegarder(); }

  Executeur& executeur() { return executeur_; }
  const Registre& registre() const { return registre_; }
  LanceursReels& lanceurs() { return lanceurs_; }

 private:
  PlateauReel(const Reglages& reglages, Registre registre, Acces acces,
              std::unique_ptr<TerminauxTmux> terminaux, CatalogueRegles regles);
  std::unique_ptr<ServeurHTTP> ecouter(std::uint16_t port);
  std::optional<std::string> demarrer(const Reglages& reglages);

  HorlogeReelle horloge_;
  const ReglagesHermes hermes_;
  Registre registre_;
  Acces acces_;
  std::unique_ptr<TerminauxTmux> terminaux_;
  VeilleReelle veille_;
  const Trousseau trousseau_;
  Lointains lointains_;
  const std::unique_ptr<SecondMac> secondMac_;  ///< null when none is set
  LanceursReels lanceurs_;
  MachineReelle machine_;
  Extinction extinction_;
  AlertesEnFile alertes_;
  VuesTmux vues_;
  DessinAPart dessin_;
  PhotographeReel photographe_;
  Ecoute ecoute_;
  Executeur executeur_;
  std::unique_ptr<ServeurHTTP> serveur_;
  std::optional<FichierEndpoint> fichier_;
  std::optional<Ronde> ronde_;
};

}  // namespace tarnavelle::Plateau
