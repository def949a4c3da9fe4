// Tells the operator, once each, that an agent needs him and that a tracked task has ended: outside the
// terminals, by the desktop's notifications and by a push to an ntfy topic of his own. Whoever raises an alert
// never waits: a thread of its own gives them, and when they come faster than they can be given, the oldest
// that wait are dropped and counted in the next. ntfy: https://docs.ntfy.sh/publish/
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Registre/Registre.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/Resultat.hpp"
#include "Vues/Apercu.hpp"

namespace tarnavelle::Plateau {

struct Alerte {
  enum class Genre { besoin, tacheFinie, tacheSansPreuve };
  Genre genre = Genre::besoin;
  std::string nom;     ///< the agent's
  std::string detail;  ///< text of its screen, or of its task: hostile; may be empty
  bool operator==(const Alerte&) const = default;
};

/// What it says of itself: name and kind. "Merlin a besoin de vous."
std::string phrase(const Alerte& alerte);

/// Which alerts a board's state calls for: each need and each end of a task once, also across restarts of the
/// door, which the registry remembers. One thread at a time.
class GuetAlertes {
 public:
  explicit GuetAlertes(Registre& registre);
  /// Those that were not given yet; from here on they are.
  std::vector<Alerte> nouvelles(const Apercu& apercu);

 private:
  bool neuve(const std::string& sujet);

  Registre& registre_;
  std::set<std::string> dites_;
  std::map<std::string, Instant> besoins_;  ///< since when, by the agent's id
};

/// Takes alerts without making anyone wait. Safe from any thread.
class Alertes {
 public:
  virtual ~Alertes() = default;
  virtual void donner(const Alerte& alerte) = 0;
};

/// One way to reach the operator. May take its time, within bounds of its own: 5 seconds at most, 3 once it is
/// to stop.
class CanalAlertes {
 public:
  virtual ~CanalAlertes() = default;
  /// Or why it could not be given, in French: a sentence. `arret`, asked now and then: true gives it up.
  virtual std::optional<std::string> donner(const Alerte& alerte, const std::function<bool()>& arret) = 0;
};

/// The desktop's notifications; nothing where there is no desktop. One that turns out to have none says so
/// once.
std::unique_ptr<CanalAlertes> canalBureau(const Variables& environnement);

/// A push to the topic of TARNAVELLE_NTFY_TOPIC, at TARNAVELLE_NTFY_SERVEUR, with TARNAVELLE_NTFY_JETON;
/// nothing where none is set. The detail goes with it when TARNAVELLE_NTFY_DETAIL is "1". Or why the setting
/// cannot be used, in French: a sentence.
Resultat<std::unique_ptr<CanalAlertes>, std::string> canalNtfy(const Variables& environnement);

class AlertesEnFile final : public Alertes {
 public:
  static constexpr std::size_t enAttenteMax = 32;

  /// `plainte` is told, on the thread of this, what could not be given.
  AlertesEnFile(std::vector<std::unique_ptr<CanalAlertes>> canaux,
                std::function<void(const std::string&)> plainte);
  /// Waits for the one that is being given, which is told to stop; the others are dropped.
  ~AlertesEnFile() override;
  AlertesEnFile(const AlertesEnFile&) = delete;
  AlertesEnFile& operator=(const AlertesEnFile&) = delete;

  void donner(const Alerte& alerte) override;

 private:
  void courir();

  const std::vector<std::unique_ptr<CanalAlertes>> canaux_;
  const std::function<void(const std::string&)> plainte_;
  std::mutex verrou_;
  std::condition_variable reveil_;
  std::deque<Alerte> file_;
  std::size_t perdues_ = 0;
  bool arret_ = false;
  std::thread fil_;
};

}  // namespace tarnavelle::Plateau
