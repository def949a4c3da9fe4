// What is read, again and again, of one machine where agents live: their logs, all of them asked after with one
// line a second, more often while somebody waits, never when there are none; and, when asked, which sessions
// there are. Safe from any thread. Private to this folder.
#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Hotes/Carnet.hpp"
#include "Hotes/LienSSH.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau::interne {

class SuiviHote {
 public:
  using Sessions = std::vector<Lointain::Session>;

  SuiviHote(const ReglagesSSH& reglages, const std::string& hote, std::function<int()> portPorte);
  ~SuiviHote();
  SuiviHote(const SuiviHote&) = delete;
  SuiviHote& operator=(const SuiviHote&) = delete;

  const LienSSH& lien() const { return lien_; }

  /// `port`: over there, that is to lead to the door; 0 for none.
  void suivre(const std::string& cle, const std::string& session, const std::filesystem::path& journal,
              int port);
  void oublier(const std::string& cle);
  void guetter(const std::string& cle, int plus);

  /// Asked for now.
  Resultat<Sessions, PanneSSH> lister(std::function<bool()> arret = {});
  std::optional<Sessions> vues();

  /// A port over there that leads to the door here, held for as long as there are agents; 0 when the host
  /// does not allow it.
  int porte();
  bool mene(int port);

 private:
  using Montre = std::chrono::steady_clock;
  struct Suivi {
    Carnet carnet;
    int guets = 0;
    bool perdu = false;  ///< its log here knows that nobody reads it over there
  };

  void courir();
  bool arrete();
  /// Whether some log holds more than was read: what came during a long cut must not pass for news for long.
  Resultat<bool, PanneSSH> tour();
  void perdre(bool perdu);
  void tenirPorts(bool neuf);

  const LienSSH lien_;
  const std::function<int()> portPorte_;
  ShellDistant shell_;  ///< the thread's own, as what follows
  Montre::time_point prochainPort_{};

  std::mutex mutex_;  ///< guards what follows
  std::condition_variable reveil_;
  bool arret_ = false;
  bool aLister_ = false;
  std::map<std::string, Suivi> suivis_;
  std::optional<Sessions> vues_;
  Montre::time_point vuesLe_{};
  std::map<int, bool> ports_;  ///< over there, that are to lead to the door; whether they do
  std::thread fil_;
};

}  // namespace tarnavelle::Plateau::interne
