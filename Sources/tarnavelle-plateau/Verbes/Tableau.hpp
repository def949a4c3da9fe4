// What stands on the board at one moment, as the registry tells it, and what verbs check in it before they act:
// each check gives what was asked for or the French refusal. A plain value.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Porte/ReponsePorte.hpp"
#include "Registre/Registre.hpp"
#include "Socle/Resultat.hpp"
#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

template <class T>
using OuRefus = Resultat<T, ReponsePorte>;

/// A window as the operator sees it: an agent's, a shell's, or the cockpit's own.
struct Fenetre {
  std::string id;
  std::string nom;
  std::int64_t scene = 0;
  std::vector<std::string> etiquettes;
  std::string session;
  std::string terminal;  ///< empty when it has none: the cockpit's own, or one that is gone
  Date::Instant ouverture{};
  const FicheAgent* agent = nullptr;      ///< within the same `Tableau`
  const FicheFenetre* fenetre = nullptr;  ///< the same
};

/// Where an agent or a window runs. By its key too: after tmux has begun anew, another may have its number.
template <class Fiche>
IdTerminal terminalDe(const Fiche& fiche) {
  return {fiche.terminal, fiche.id};
}

/// The session of an agent on its own machine, for one that lives elsewhere (`Lointain`).
std::string sessionLaBas(const FicheAgent& agent);
/// Whether it lives elsewhere, and nothing shows it here.
bool estLaBas(const FicheAgent& agent);

class Tableau {
 public:
  static OuRefus<Tableau> lire(const Registre& registre);

  std::vector<FicheScene> scenes;  ///< never empty
  std::vector<FicheAgent> agents;
  std::vector<FicheFenetre> fiches;

  const FicheScene& visible() const;
  const FicheScene* scene(std::int64_t numero) const;
  /// By its name, its folder or the last part of its folder.
  const FicheScene* scene(std::string_view nom) const;

  /// All of them in the order of their opening.
  std::vector<Fenetre> fenetres() const;
  /// By its name, a label or its session's name; the window in view for an empty name.
  OuRefus<Fenetre> fenetre(const std::string& nom) const;
  /// The agent whose window bears that name, or is in view for an empty name.
  OuRefus<FicheAgent> agentOuvert(const std::string& nom) const;
  /// The agent named, its window open or not.
  OuRefus<FicheAgent> agent(const std::string& nom) const;
  /// What has a screen, a shell's terminal too: in view for an empty name.
  OuRefus<Fenetre> terminalOuvert(const std::string& nom) const;
  /// The same, named, an agent's window open or not.
  OuRefus<Fenetre> terminal(const std::string& nom) const;
  /// The agent of that name that goes on without a window, if there is one.
  const FicheAgent* ferme(std::string_view nom) const;
  const FicheAgent* parId(std::string_view id) const;

  bool pris(std::string_view nom) const;
  /// When what is opened now opens: after all the rest, even if the calendar was set back.
  Date::Instant ouverture(Date::Instant maintenant) const;
  /// A session name that nothing here bears, and that is not taken elsewhere.
  std::string sessionLibre(const std::string& programme,
                           const std::function<bool(const std::string&)>& prise) const;

 private:
  std::optional<Fenetre> chercher(std::string_view nom) const;
  std::optional<ReponsePorte> refusFerme(std::string_view nom) const;
  OuRefus<Fenetre> aEcran(const std::optional<Fenetre>& trouvee, const std::string& nom) const;
  std::string nomsDesAgentsOuverts() const;
};

// What is checked of the arguments.

/// Longest text that the board keeps, and longest one that is typed, in bytes.
inline constexpr std::size_t octetsGardesMax = 16 * 1024;
inline constexpr std::size_t octetsTapesMax = 512 * 1024;

bool vide(std::string_view texte);
ReponsePorte manque(std::string_view argument);
std::optional<ReponsePorte> tropLong(std::string_view argument, std::string_view valeur,
                                     std::size_t octetsMax = octetsGardesMax);
/// Why a text cannot be kept: nothing in it, or too much.
std::optional<ReponsePorte> refusTexte(std::string_view argument, std::string_view valeur);

/// A refusal of the registry, as the operator hears it.
ReponsePorte refus(const Avarie& avarie);
template <class T>
OuRefus<T> ouRefus(Garde<T> garde) {
  if (garde) return std::move(*garde);
  return Sinon{refus(garde.raison())};
}

}  // namespace tarnavelle::Plateau
