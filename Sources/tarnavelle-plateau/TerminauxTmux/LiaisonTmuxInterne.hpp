// The link to the tmux server: one thread and one control client, for the commands and for what is watched.
//
// One request is under way at a time, and what a caller has given up is never sent: a server that was stopped
// and goes on carries out one late request at most. While that one is overdue every other is refused at once.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "ClientControleInterne.hpp"
#include "GuetTmuxInterne.hpp"
#include "PriseTmuxInterne.hpp"
#include "ProcessusInterne.hpp"
#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau {

/// What the link tells, on its own thread: short, and without asking it anything.
struct EchosTmux {
  std::function<void()> change;                      ///< sessions came or went, or a program ended
  std::function<void()> regard;                      ///< so did those who look, or their terminals' sizes
  std::function<void(const std::string& id)> ecrit;  ///< a watched terminal was written to
  std::function<void()> perdu;                       ///< the server was there, and is out of reach
};

class LiaisonTmux {
 public:
  LiaisonTmux(PriseTmux prise, std::chrono::milliseconds delai, EchosTmux echos);
  ~LiaisonTmux();
  LiaisonTmux(const LiaisonTmux&) = delete;
  LiaisonTmux& operator=(const LiaisonTmux&) = delete;

  /// The replies to a line of commands: to each of them, in order, up to the first that failed. The first
  /// failure is `inconnu` when tmux finds no such target, else `refuse`.
  Ou<std::vector<BlocTmux>> demander(const std::string& commandes);
  /// The same, for the last one: whatever is asked afterwards is refused, and no server is started any more.
  Ou<std::vector<BlocTmux>> demanderEnDernier(const std::string& commandes);

  /// From now on a client that is there is asked, and none is opened: that would start a server.
  void neRienDemarrer();

  void guetter(const std::string& id);
  void laisser(const std::string& id);
  /// While one lives, and holds, tmux tells nothing of that terminal.
  class Suspension {
   public:
    Suspension(LiaisonTmux& liaison, std::string id)
        : liaison_(liaison), id_(std::move(id)), tient_(liaison_.suspendre(id_)) {}
    ~Suspension() { liaison_.reprendre(id_); }
    Suspension(const Suspension&) = delete;
    Suspension& operator=(const Suspension&) = delete;
    explicit operator bool() const { return tient_; }

   private:
    LiaisonTmux& liaison_;
    const std::string id_;
    const bool tient_;
  };

  /// `change` is told at the end of each of these processes, which take the place of those given before.
  void surveiller(const std::set<pid_t>& processus);
  /// tmux up to 3.3a may miss the end of a program: it is made to look.
  void faireRecolter();

  /// What came back was not what was asked: the client is started anew.
  void rompre();

  const PriseTmux& prise() const { return prise_; }

 private:
  struct Demande;
  using Instant = std::chrono::steady_clock::time_point;

  bool suspendre(const std::string& id);
  void reprendre(const std::string& id);
  void courir();
  void servir();
  bool ouvrirClient();
  bool accueilli();
  void lireCommandes();
  void servirGuets();
  void interne(std::string commandes, std::function<void(const Demande&)> ensuite);
  void entendre(std::string_view avis);
  void perdre();
  void recolter();
  void congedier();
  Ou<std::vector<BlocTmux>> attendre(std::unique_lock<std::mutex>& garde, const std::string& commandes);
  void finir(Demande& demande, bool perdue);
  void reveiller();
  Instant prochaine() const;

  const PriseTmux prise_;
  const std::chrono::milliseconds delai_;
  const EchosTmux echos_;
  std::optional<Tube> reveil_;

  std::mutex verrou_;
  std::condition_variable reponse_;
  std::deque<std::shared_ptr<Demande>> file_;
  std::shared_ptr<Demande> enVol_;
  std::map<std::string, GuetTmux, std::less<>> guets_;
  std::map<pid_t, Descripteur> fins_;
  Processus::Un serveur_;
  bool arret_ = false;
  bool rompre_ = false;
  bool derniere_ = false;
  bool sansDepart_ = false;

  // The thread's own.
  bool accueilVu_ = false;               ///< the server was seen to take a control client
  std::optional<Instant> occupeDepuis_;  ///< since when it answers, with another one there
  std::unique_ptr<ClientControle> client_;
  std::optional<Instant> etabli_;                  ///< since when the client answers
  std::deque<std::shared_ptr<Demande>> internes_;  ///< the link's own requests
  std::string jeton_;                              ///< ends the replies to a request: no screen can know it
  std::uint64_t rang_ = 0;
  std::vector<pid_t> aRecolter_;  ///< clients that were let go of, and may not have left yet
  std::thread fil_;
};

}  // namespace tarnavelle::Plateau
