// What the program is asked for. Each returns the exit status.
#pragma once

#include <filesystem>
#include <string>

#include "Socle/Environnement.hpp"
#include "Voie.hpp"

namespace tarnavelle::Hermes {

namespace Statut {
inline constexpr int fait = 0;
inline constexpr int refus = 1;          ///< refused, cut, given up
inline constexpr int mauvaiseLigne = 2;  ///< the line or the settings are wrong
inline constexpr int sansReponse = 3;    ///< nobody answers
inline constexpr int interrompu = 130;
}  // namespace Statut

/// Says each notice as it comes, until it is interrupted.
int ecouter(const Variables& environnement, bool json);

struct Demande {
  std::string texte;  ///< empty: all of standard input, or what is typed on a terminal
  AccesSSH acces;
  bool nouvelle = false;
  bool json = false;
};
/// Where a shell keeps its conversations.
std::filesystem::path dossierDuShell(const Variables& environnement);

/// One message and its answer; or, on a terminal and without a text, a conversation.
int parler(const Variables& environnement, const Demande& demande);

struct Carte {
  std::filesystem::path dossier;  ///< of its memory
  AccesSSH acces;
  bool nouvelle = false;  ///< what its memory holds is forgotten
};
/// A conversation on this terminal, until it is left.
int converser(const Variables& environnement, const Carte& carte);

}  // namespace tarnavelle::Hermes
