// One watched terminal. Its window is linked into the board's own session, whose control client then hears of
// its output: a control client of its own would tell as much, but tmux up to 3.3a falls when one arrives while
// a session comes or goes. The first output is told at once; then tmux is asked to keep the rest to itself for
// a while, so that what a flood costs does not grow with it, and once it tells again, whoever watches is asked
// to look again. A plain value: what is to be sent, and what came of it.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace tarnavelle::Plateau {

class GuetTmux {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::milliseconds silence{20};  ///< least time between two tellings

  explicit GuetTmux(std::string id);

  bool suspendu = false;  ///< not to be heard of for now

  void guetter();
  void laisser();
  bool guette() const { return compte_ > 0; }

  /// The next commands to send; nothing while those before have no reply, or when nothing is to be done.
  std::optional<std::string> suite(Instant maintenant);
  /// When there may be something to do without anything having come.
  std::optional<Instant> echeance() const;
  /// The reply to `suite`'s commands. Whether whoever watches is to look.
  bool repondu(bool reussi);
  /// The terminal was written to. Whether whoever watches is to look.
  bool ecrit(Instant maintenant);
  /// The server is lost, and its links with it.
  void perdu();
  /// tmux holds nothing of it.
  bool delie() const { return !lie_ && envoi_ == Envoi::aucun; }

 private:
  enum class Envoi { aucun, lier, delier, taire, entendre };
  bool voulu() const { return guette() && !suspendu; }

  int compte_ = 0;  ///< who watches
  std::string id_;
  std::string place_;  ///< where its window is linked
  Envoi envoi_ = Envoi::aucun;
  bool lie_ = false;
  bool echec_ = false;  ///< it could not be linked: not tried again until it is asked for again
  bool aTaire_ = false;
  bool tu_ = false;
  Instant reprise_;
};

/// The commands that unlink what an earlier board left linked, among the places that `list-windows` gave.
std::string delierRestes(std::string_view places);
/// The command that gives them.
std::string listerRestes();

}  // namespace tarnavelle::Plateau
