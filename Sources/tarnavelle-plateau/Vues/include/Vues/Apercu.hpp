// The board at one moment, as a person is shown it: read from the registry and the watch. A plain value.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Etats/Veille.hpp"
#include "Registre/Registre.hpp"

namespace tarnavelle::Plateau {

struct Apercu {
  /// An agent, or the terminal of a shell. Names and evidence are hostile text.
  struct Element {
    std::string id;
    std::string nom;
    std::string programme;  ///< empty for a shell
    std::int64_t scene = 0;
    bool ouvert = true;  ///< its window is on the scene
    Etat etat = Etat::inconnu;
    Instant depuis{};          ///< since when, for an agent that lives
    std::string besoin;        ///< what shows that it needs somebody; empty otherwise
    std::size_t messages = 0;  ///< that wait for it
    Date::Instant ouverture{};
    bool estAgent() const { return !programme.empty(); }
  };

  std::vector<FicheScene> scenes;
  std::vector<Element> elements;  ///< in the order of their opening
  std::vector<FichePostIt> postits;
  std::vector<FicheTache> closes;  ///< the tasks that have ended
  std::size_t messages = 0;        ///< not given yet, whoever they are for
  std::size_t avis = 0;            ///< of Hermès that nobody has read yet
  std::string dernierAvis;         ///< hostile text

  static Garde<Apercu> lire(const Registre& registre, Veille& veille);

  const FicheScene* scene(std::int64_t numero) const;
  const FicheScene* visible() const;
  /// Every agent, the most urgent first, else in the order of their opening.
  std::vector<const Element*> agentsParUrgence() const;
  std::vector<const FichePostIt*> postitsDe(std::int64_t scene) const;
};

}  // namespace tarnavelle::Plateau
