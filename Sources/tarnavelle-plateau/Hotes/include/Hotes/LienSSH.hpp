// Another machine, reached by the user's own ssh with the user's own configuration: every line goes over one
// shared connection, which ssh opens at the first line and keeps for a while after the last. No password is
// ever asked for, nothing of ours is forwarded. The line itself is given on a stream: no shell but sh reads it,
// whatever the login shell over there is, and no process list shows it; what that shell says of its own is not
// taken for its output. Safe from any thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Hotes/PanneSSH.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle::Plateau {

struct ReglagesSSH {
  std::string programme = "ssh";          ///< looked up on PATH
  std::filesystem::path configuration{};  ///< instead of the user's own (ssh -F); empty for that
  std::filesystem::path
      dossier{};  ///< of the shared connections' sockets: private (0700), at most `dossierMax` bytes
  Environnement environnement{};  ///< ssh's: all of it

  /// A socket's path ends at 104 bytes, of which ssh takes some for itself.
  static constexpr std::size_t dossierMax = 60;
  /// A folder fit for that, reserved for this user: `voulu` when it is short enough, else one in the system's
  /// temporary folder. Empty when none can be had.
  static std::filesystem::path dossierCourt(const std::filesystem::path& voulu);
};

/// A line to run over there.
struct OrdreSSH {
  std::string ligne;     ///< for sh
  std::string entree{};  ///< what it reads: text, without NUL; a line feed ends it
  std::chrono::milliseconds auPlus{10000};
  std::size_t sortieMax = std::size_t{1} << 20;  ///< bytes kept of its output: the last ones
  std::function<bool()> arret{};                 ///< asked now and then: true ends it before its time
};
struct SortieSSH {
  int statut = 0;  ///< the line's own
  std::string sortie;
};

class LienSSH {
 public:
  LienSSH(ReglagesSSH reglages, std::string hote);

  const std::string& hote() const { return hote_; }

  /// Runs it; a line that fails is no failure of the link.
  Resultat<SortieSSH, PanneSSH> courir(const OrdreSSH& ordre) const;

  /// Where the name leads by the user's configuration, as "user@host:port", and through which machines: asked
  /// of ssh, which runs what the configuration has it run and connects to nothing.
  Resultat<std::string, PanneSSH> destination() const;

  /// Ends the shared connection, and what runs over it; the next line opens another.
  void rompre() const;

  // Words of an ssh of its own, beside the shared connection, for whoever runs it. It tells its errors in the
  // file `journal`, for `PanneSSH::lire`.

  /// A terminal over there, in the one that it is started from. `ligne` is read by the login shell: without any
  /// quote, backslash or "!".
  std::vector<std::string> motsTerminal(const std::string& ligne, const std::filesystem::path& journal) const;
  /// A tunnel from a port of this machine's loopback to an address as it is known over there; it ends at once
  /// when that cannot be had. Nothing runs over there.
  std::vector<std::string> motsTunnel(int portIci, const std::string& cible, int portLaBas,
                                      const std::filesystem::path& journal) const;

  /// A port over there, on its loopback alone, that leads to a port of this one's: `voulu`, or with 0 one that
  /// is chosen there. It lives as long as the shared connection. Its number.
  Resultat<int, PanneSSH> rebours(int portIci, int voulu = 0) const;

  const ReglagesSSH& reglages() const { return reglages_; }

 private:
  friend class ShellDistant;
  std::vector<std::string> mots(const std::filesystem::path& journal) const;
  std::vector<std::string> motsShell(const std::filesystem::path& journal) const;
  std::string prise() const;

  ReglagesSSH reglages_;
  const std::string hote_;
};

/// A shell over there that stays: asking it costs no new process here. One thread at a time.
class ShellDistant {
 public:
  explicit ShellDistant(const LienSSH& lien);
  ~ShellDistant();
  ShellDistant(const ShellDistant&) = delete;
  ShellDistant& operator=(const ShellDistant&) = delete;

  bool ouvert() const { return corps_ != nullptr; }
  void fermer();

  /// What a line prints, run by that shell itself: it must be none that ends it. After a failure the shell is
  /// gone; the next line starts another.
  Resultat<std::string, PanneSSH> demander(std::string_view ligne, std::chrono::milliseconds auPlus,
                                           const std::function<bool()>& arret = {});

 private:
  struct Corps;
  const LienSSH& lien_;
  std::unique_ptr<Corps> corps_;
};

}  // namespace tarnavelle::Plateau
