// Real terminals: tmux, on a socket of our own. One control-mode client carries every command, and hears when
// something was written to a terminal that is watched: its window is linked into the client's session for that
// while. The user's own server and configuration are never read nor touched. The server outlives this object:
// whoever opens the socket next finds the terminals.
//
// tmux 3.2 at least (`new-session -f`, `refresh-client -A`). tmux's control mode:
// https://github.com/tmux/tmux/wiki/Control-Mode
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Socle/Environnement.hpp"
#include "Socle/Resultat.hpp"
#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

/// The session of the board itself, which keeps the server and the command client. What is watched is linked
/// into it for a while.
inline constexpr std::string_view sessionPlateau = "plateau";

struct ReglagesTmux {
  std::string prise = "tarnavelle";  ///< the socket: a name (tmux -L), or a path (it holds a "/": tmux -S)
  std::filesystem::path dossier;  ///< ours: configuration, launches, long pastes. Made 0700 if it is not there
  /// The words that start a program from a launch file, whose path is added: see `Lanceur`.
  std::vector<std::string> lanceur;
  std::string tmux = "tmux";  ///< program, looked up on PATH
  Environnement
      environnement;  ///< the server's, and so what every program inherits once `Lanceur` has cleaned it
  std::chrono::milliseconds delai = Terminaux::delaiMax;  ///< longest wait of a call, but for `terminer`
  std::chrono::milliseconds sursis{1500};                 ///< between TERM and KILL
  /// "NAME=value" that all that is started under a key inherits, and by which it is found once whoever started
  /// it has ended (Linux).
  std::function<std::string(const std::string& cle)> marque;
  std::vector<std::string> demons;  ///< programs that inherit it too and that others may share: they go on
};

class TerminauxTmux final : public Terminaux {
 public:
  /// Nothing is started yet: the server is, if there is none, by the first call. A reason in French when tmux
  /// is missing or too old, when another board has this socket, or when the folder cannot be used.
  static Resultat<std::unique_ptr<TerminauxTmux>, std::string> ouvrir(ReglagesTmux reglages);
  ~TerminauxTmux() override;

  Ou<std::vector<Terminal>> lister() override;
  Ou<Terminal> ouvrir(const Lancement& lancement) override;
  Ou<Terminal> relancer(const IdTerminal& id, const Lancement& lancement) override;
  /// Ends the processes of the terminal's session, and what they started in other sessions; but a program that
  /// had started itself anew in one (a daemon, which others may share) goes on.
  /// What they left behind before ends with them too (`marque`), even that of a terminal that is gone.
  /// May take `sursis` and a second.
  Ou<Fait> terminer(const IdTerminal& id) override;
  Ou<Ecran> ecran(const IdTerminal& id) override;
  Ou<Peinture> peinture(const IdTerminal& id) override;
  Ou<std::vector<std::string>> historique(const IdTerminal& id, int lignes) override;
  Ou<Fait> coller(const IdTerminal& id, std::string_view texte) override;
  Ou<Fait> presser(const IdTerminal& id, const std::vector<Touche>& touches) override;
  Ou<Fait> valider(const IdTerminal& id, const std::vector<std::string>& saufSi) override;
  Ou<Fait> redimensionner(const IdTerminal& id, Taille taille) override;
  void guetter(const IdTerminal& id) override;
  void laisser(const IdTerminal& id) override;
  /// With nullptr: returns once no handler is being called any more.
  void observer(Observateur* observateur) override;

  /// Ends the server, and with it whatever runs there or was started under its keys, or these; what is left of
  /// it, in words.
  Ou<std::vector<std::string>> eteindre(std::vector<std::string> cles = {});

  /// The door closes: no server is started any more, not even for its last words.
  void neRienDemarrer();

  /// The words by which a person looks at a terminal: `tmux … attach-session -t =<session>`.
  std::vector<std::string> motsPourRegarder(std::string_view session) const;

  // For those who show these terminals to a person, in sessions of their own on the same server.

  /// What each command of a line wrote. The caller answers for its words (`MotsTmux::citer`).
  Ou<std::vector<std::string>> commander(const std::string& commandes);
  /// Told, on the link's thread, when somebody began to look, looks elsewhere or left, when sessions came or
  /// went, and of what `commander` subscribed to: short, and asks nothing here. With nothing: told no more once
  /// this returns.
  void surRegard(std::function<void()> regard);

 private:
  class Interieur;
  explicit TerminauxTmux(std::unique_ptr<Interieur> interieur);
  std::unique_ptr<Interieur> interieur_;
};

}  // namespace tarnavelle::Plateau
