// The lines that sh runs on another machine, beside those of the kit. A session is meant exactly: tmux takes a
// name that nothing bears as the beginning of one, so names are compared here, or given with "=". Pure
// functions. Private to this folder.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Agents/AgentCLI.hpp"
#include "Agents/InjectionPorte.hpp"

namespace tarnavelle::Plateau::interne::Scripts {

/// What there is over there for an agent to be opened.
struct Lieu {
  bool tmux = false;
  bool programme = false;
  std::string pont;     ///< the bridge, by which it may reach a door; empty when it is not there
  std::string dossier;  ///< absolute; empty when there is no such folder
  std::string maison;
  std::vector<std::string> sessions;  ///< of tmux, everybody's
};
std::string sonder(std::string_view programme, std::string_view dossier);
Lieu lieu(std::string_view sortie);

/// Where the scripts of a session lie, from the home over there. The first goes when it is run.
std::string cheminDepart(std::string_view session);
std::string cheminRetour(std::string_view session);

/// Removes the log of an older session of that name, before another line: it says nothing of the one to come.
std::string effacer(std::string_view session);
/// Writes what it reads there, for its owner alone. Fails when it cannot.
std::string deposer(std::string_view chemin, bool programme = false);

struct Depart {
  const AgentCLI& cli;
  std::string session;
  std::string dossier;  ///< absolute
  std::vector<std::string> extra{};
};
/// Starts the agent, once, and shows its session.
std::string depart(const Depart& d);
/// Shows a session that lives. Whoever of ours still looks at it, from a link that was cut, is sent away; a
/// paste that the cut left open is closed.
std::string retour(std::string_view session);
/// What tmux writes first of all, unless its user wants no other screen: the terminal is the session's from
/// there on.
inline constexpr std::string_view signe = "\x1b[?1049h";
/// The words that run one of the two over there, for any login shell.
std::string lancer(std::string_view chemin);

/// Where what joins the agent of a session to the door lies, from the home over there.
std::string cheminPorte(std::string_view session);
/// The same for a program that takes no file but the words of a bridge: a bridge that knows the door.
std::string cheminPont(std::string_view session);
std::string pont(std::string_view binaire, const InjectionPorte::Porte& porte);

/// Tells what has become of a session, and leaves there the script that shows it, which it reads.
std::string presence(std::string_view session);
enum class Presence { vit, aPartir, finie, inconnue };
Presence presence(std::string_view sortie, std::string_view session);

/// The kit's list of the sessions, and what tmux has to say when it is asked for it.
std::string lister(std::int64_t queueTitres);
/// Why nobody knows which sessions there are; nothing when it is known, be it that there are none.
std::optional<std::string> tmuxMuet(std::string_view sortie);
/// Prints what has scrolled out of a session's window, so many lines of it, and its screen.
std::string historique(std::string_view session, int lignes);

/// The sizes of the logs of these sessions, in one line.
std::string tailles(const std::vector<std::string>& sessions);
/// By the log's file name.
std::vector<std::pair<std::string, std::int64_t>> lireTailles(std::string_view sortie);

}  // namespace tarnavelle::Plateau::interne::Scripts
