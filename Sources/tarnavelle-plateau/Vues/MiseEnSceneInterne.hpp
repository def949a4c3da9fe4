// Brings the scenes on the tmux server to what the board holds: who looks is looked up, then each scene that
// somebody looks at gets its views, its layout and its agents their sizes. One thread at a time.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "CommandesVuesInterne.hpp"
#include "DispositionInterne.hpp"
#include "TerminauxTmux/TerminauxTmux.hpp"
#include "Vues/Apercu.hpp"
#include "Vues/VuesTmux.hpp"

namespace tarnavelle::Plateau {

class MiseEnScene {
 public:
  /// What was asked for a scene by a verb.
  struct Souhait {
    Disposition::Plan plan = Disposition::Plan::automatique;
    std::string vedette;  ///< the board's id; empty: what is in view
  };
  using Souhaits = std::map<std::int64_t, Souhait>;

  MiseEnScene(TerminauxTmux& terminaux, const ReglagesVues& reglages)
      : terminaux_(terminaux), reglages_(reglages) {}

  /// The whole: scenes, views, layouts, sizes. What was asked for is laid out, and from here on kept.
  Ou<Fait> regarder(const Apercu& apercu, const Souhaits& souhaits);
  /// What the scenes that are looked at say. Asks tmux for nothing that has not changed.
  Ou<Fait> ecrire(const Apercu& apercu);
  /// A message on every person's terminal, and a bell where it shows a scene.
  void annoncer(const std::string& texte);
  void fermerPorte();
  /// The person chose that scene: nobody is to be led elsewhere.
  void suivre(std::int64_t scene) { visible_ = scene; }

  /// Ids of what has a view on each scene that somebody looks at.
  std::map<std::int64_t, std::set<std::string>> vues() const;
  std::string nomDeSession(std::int64_t scene) const;
  bool quelquUn() const { return !releve_.spectateurs.empty(); }
  /// Whether the person has gone to another scene than the one the board shows.
  std::optional<std::int64_t> sceneChoisie() const;

 private:
  using Scene = CommandesVues::SceneMontree;

  Ou<Fait> relever();
  Ou<Fait> demander(const std::string& commandes);
  /// All of them, in one line while none fails; a target that has gone meanwhile is no fault of the others.
  Ou<Fait> demanderChacune(const std::vector<std::string>& commandes);
  Ou<Fait> ouvrirScenes(const Apercu& apercu);
  Ou<Fait> mener(std::int64_t visible, bool neuve);
  Ou<Fait> montrer(const Apercu& apercu, const FicheScene& scene, bool voulu);
  Ou<Fait> poserVues(const FicheScene& scene, const std::vector<std::string>& voulues);
  Ou<Fait> ranger(std::int64_t scene, const std::vector<std::string>& voulues, bool voulu);
  Ou<Fait> retirerVues(std::int64_t scene);
  Ou<Fait> dimensionner();
  Souhait souhait(std::int64_t scene) const;
  std::vector<std::string> choisies(const Apercu& apercu, const FicheScene& scene);
  std::filesystem::path fichier(std::int64_t scene) const;
  std::vector<std::string> motsListe(std::int64_t scene) const;

  TerminauxTmux& terminaux_;
  const ReglagesVues& reglages_;
  CommandesVues::Releve releve_;
  std::string suivi_;                    ///< the client that is told of sizes; empty for none
  std::optional<std::int64_t> visible_;  ///< the scene that persons were last led to
  struct Montree {
    std::map<std::string, std::string> vues;  ///< made: the terminal by the board's id
    std::set<std::string> ecartees;           ///< closed by the person's own hand
    std::string disposition;
    std::string ligne;
    std::vector<std::string> liste;
    std::map<std::string, std::string> titres;  ///< by pane
  };
  std::map<std::int64_t, Montree> montrees_;
  std::map<std::int64_t, Souhait> souhaits_;
};

}  // namespace tarnavelle::Plateau
