// The cockpit of another Mac, through a shell on that Mac: where its door is, what its board shows, and
// commands that are posted there once. Its board is read when somebody asks, on a thread of its own. Safe from
// any thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "Hotes/LienSSH.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau {

class SecondMac final : public Distant {
 public:
  using Courir = std::function<Resultat<SortieSSH, PanneSSH>(const OrdreSSH&)>;

  /// `courir` runs a line over there.
  SecondMac(std::string hote, Courir courir);
  ~SecondMac() override;
  SecondMac(const SecondMac&) = delete;
  SecondMac& operator=(const SecondMac&) = delete;

  /// Ends what is under way; nothing is asked of it any more.
  void arreter();

  const std::string& hote() const override { return hote_; }
  Vue vue(bool fraiche) override;
  Resultat<ReponsePorte, std::string> relayer(const CommandeControle& commande) override;

 private:
  using Montre = std::chrono::steady_clock;
  /// What came of posting once.
  struct Essai {
    std::optional<ReponsePorte> reponse{};
    std::string pourquoi{};  ///< there is no reply
    bool rienFait = false;   ///< surely nothing was carried out
    bool lien = true;        ///< the machine itself was reached
  };

  void lire();
  Resultat<SortieSSH, PanneSSH> executer(const std::string& ligne);
  Resultat<EndpointPorte, std::string> trouver();
  Essai poster(const EndpointPorte& porte, const std::string& corps);
  Essai demander(const std::string& corps);
  void noter(bool echec);
  std::string citation() const;

  const std::string hote_;
  const Courir courir_;
  std::atomic<bool> arret_ = false;

  std::mutex mutex_;  ///< guards what follows
  std::condition_variable reveil_;
  std::optional<EndpointPorte> porte_;
  Montre::time_point porteLe_{};
  bool echec_ = false;  ///< the last command posted there failed
  bool aLire_ = false;  ///< its board; or it is being read
  Montre::time_point debut_{};
  Vue vue_{};
  std::optional<Montre::time_point> vueLe_{};    ///< when `vue_.plateau` was read
  std::optional<Montre::time_point> essayee_{};  ///< when it was last tried
  std::thread fil_;
};

}  // namespace tarnavelle::Plateau
