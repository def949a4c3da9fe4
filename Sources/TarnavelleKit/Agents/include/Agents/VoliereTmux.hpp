// The agents that live in tmux on another machine, where they outlast the cockpit's window: how their
// sessions are named, the lines that list them and kill one, the reading of what they print, and the order in
// which they are shown. Running the lines (over SSH) is the caller's business. Safe from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Agents/AgentCLI.hpp"

namespace tarnavelle {

namespace VoliereTmux {

inline constexpr std::string_view separateur = ":";               ///< between a listed name and its folder
inline constexpr std::string_view format = "#S:#{session_path}";  ///< for `tmux list-sessions -F`
inline constexpr std::string_view marqueTitre = "T:";             ///< for `CarnetDeVol::commandeTitres`

struct SessionLaBas {
  std::string nom;  ///< identifies it
  std::string dossier;
  std::string titre;  ///< of the conversation; may be empty

  bool operator==(const SessionLaBas&) const = default;

  const std::string& id() const { return nom; }
  std::string titreAffiche() const;
  std::string dossierCourt() const;
};

/// An agent's session name, taken apart.
struct Nom {
  std::string id;         ///< of the agent's program, in the catalogue
  std::int64_t rang = 1;  ///< among the agents of that program on the same machine, from 1
  bool operator==(const Nom&) const = default;
};

/// "tarnavelle-<id>", then "-<rank>" from rank 2 on.
std::string nommer(const Nom& nom);

/// The inverse; nothing when no agent of the catalogue bears that name.
std::optional<Nom> decomposer(std::string_view nom);

/// Whether a tmux session is one of ours, which alone are listed and killed.
bool vraiNom(std::string_view nom);

/// Lists the sessions, then the titles of their conversations, as `CarnetDeVol::commandeTitres` finds them in
/// the last `queue` bytes of each transcript. Prints nothing, and succeeds, where there is no tmux or no
/// session.
std::string commandeLister(std::int64_t queue);

/// Our sessions, by name, in what that line prints, its lines in any order. Bytes that are not UTF-8 read as
/// U+FFFD.
std::vector<SessionLaBas> lire(std::string_view sortie);

/// The agent's title and its rank beyond the first; the name itself when it cannot be taken apart.
std::string titre(std::string_view nom);

/// The title of the agent's program, empty when the name cannot be taken apart.
std::string nomCLI(std::string_view nom);

/// Kills a session of ours; no line for any other. Succeeds also when it is dead already. tmux takes a
/// name that no session bears as the beginning of one: list before killing.
std::optional<std::string> commandeTuer(std::string_view nom);

}  // namespace VoliereTmux

namespace UrgenceVoliere {

/// How much an agent needs the operator; the lower the more urgent.
enum class Cran {
  besoinDeVous = 0,  ///< waits for an answer or a permission
  travaille = 1,
  connexion = 2,
  repos = 3,
  rompue = 4,  ///< the link to its session is broken
  laBas = 5,   ///< lives over there, not open here
};

inline constexpr std::array crans = {Cran::besoinDeVous, Cran::travaille, Cran::connexion,
                                     Cran::repos,        Cran::rompue,    Cran::laBas};

/// The level of that raw value, if there is one.
std::optional<Cran> cran(std::int64_t valeur);

bool quelquUnAttend(const std::vector<Cran>& presents);

/// The positions of elements of these levels and names, most urgent first, then by name in the user's order
/// (Collation), equal ones in the order given.
std::vector<std::size_t> ordre(const std::vector<std::pair<Cran, std::string>>& elements);

/// The elements in that order; `cran` and `nom` are asked once for each.
template <class T, class CranDe, class NomDe>
std::vector<T> ordonner(std::vector<T> elements, CranDe cran, NomDe nom) {
  std::vector<std::pair<Cran, std::string>> cles;
  for (const T& element : elements) cles.emplace_back(cran(element), nom(element));
  std::vector<T> ordonnes;
  for (const std::size_t position : ordre(cles)) ordonnes.push_back(std::move(elements[position]));
  return ordonnes;
}

}  // namespace UrgenceVoliere
}  // namespace tarnavelle
