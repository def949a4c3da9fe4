// What the verbs share: the ground that they stand on, the turns of those who type into one terminal, and
// waiting for something to change. Safe from any thread.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Tableau.hpp"
#include "Verbes/Executeur.hpp"
#include "Verbes/Urgence.hpp"

namespace tarnavelle::Plateau {

/// What can be awaited in an agent's life.
enum class Evenement { idle, besoin, fini, mort };

/// What several threads share out among them: each has what nobody else has yet.
class Reserve {
 public:
  bool prendre(std::int64_t numero) {
    const std::lock_guard verrou(mutex_);
    return prises_.insert(numero).second;
  }
  void rendre(std::int64_t numero) {
    const std::lock_guard verrou(mutex_);
    prises_.erase(numero);
  }

 private:
  std::mutex mutex_;
  std::set<std::int64_t> prises_;
};

class Atelier : private Observateur {
 public:
  Atelier(const Sol& sol, const ReglagesExecuteur& reglages);
  ~Atelier() override;
  Atelier(const Atelier&) = delete;
  Atelier& operator=(const Atelier&) = delete;

  const Sol sol;
  const ReglagesExecuteur reglages;

  /// Held while a name is looked for and taken, or a record read and written back; never while a terminal is
  /// asked for anything.
  std::recursive_mutex fiches;
  /// Changes an agent's record, if it is still there.
  Garde<Fait> modifier(const std::string& id, const std::function<void(FicheAgent&)>& retouche);
  /// Forgets an agent: its record, its watch, its terminal if it has one. One that cannot be ended stays.
  Garde<Fait> oublier(const FicheAgent& agent);
  /// From here on it is followed, in that terminal; wherever it lives.
  void suivre(const FicheAgent& agent, const IdTerminal& terminal) const;
  /// The view of an agent that lives elsewhere ends here: it goes on over there, with nobody who reads it.
  Garde<Fait> quitter(const FicheAgent& agent);
  /// Writes down what has come about; when that fails, as on a full disk, `rattraper` writes it later. Whether
  /// it is written.
  bool consigner(std::function<Garde<Fait>()> ecrire);
  /// Whether nothing is left to be written.
  bool rattraper();
  /// Looks for the programs that have ended, and the terminals that are gone, without anybody having been told:
  /// what the ground does not answer stays as it is, and is looked for again at the next call of a verb.
  void relever();
  /// Whether `relever` is still due.
  bool aRelever();
  /// What was armed on that event of an agent is told.
  Garde<Fait> declencher(const std::string& id, std::string_view evenement);
  Reserve verifiees;  ///< the tasks that are being attested
  /// Whether every terminal has been taken up since the door opened (`adopterLesTerminaux`).
  std::atomic<bool> adopte = true;

  /// Whether that is another machine which can be reached from here.
  bool loin(std::string_view hote) const { return sol.lointain && !hote.empty(); }

  Date::Instant date() const;
  Constat constat(const FicheAgent& agent) const;
  /// For how long that has been so, a door that closed and opened in between included; nothing when it is not
  /// known.
  std::optional<std::chrono::seconds> depuis(const FicheAgent& agent, const Situation& situation) const;
  /// Declares anew what an agent had declared to the last door.
  void redeclarer(const FicheAgent& agent);
  /// "travaille", "attend une réponse", "au repos", "sorti", "dans un état inconnu".
  std::string_view etat(const FicheAgent& agent) const;
  /// The same of its agent, or of its command.
  std::string_view etat(const Fenetre& fenetre) const;

  // Waiting. The count moves with anything that may interest someone who waits.
  std::uint64_t battements();
  /// Waits until it has moved on from `vus`, or until then; sees to what is due meanwhile. False once the door
  /// closes.
  bool dormir(std::uint64_t vus, Instant echeance);
  void sonner();  ///< something has changed that may interest someone, and be shown
  void arreter();
  bool arrete();

  /// How many times that has come about for an agent: tells one that came and went from one that never came.
  std::uint64_t passages(const std::string& id, Evenement evenement);
  static bool est(const Constat& constat, Evenement evenement);

  /// While it lives, one caller alone types into that agent's terminal. False when others have had it for too
  /// long.
  class Tour {
   public:
    Tour(Atelier& atelier, const std::string& id);
    ~Tour();
    Tour(const Tour&) = delete;
    Tour& operator=(const Tour&) = delete;
    explicit operator bool() const { return aMoi_; }

   private:
    Atelier& atelier_;
    const std::string id_;
    std::uint64_t numero_;
    bool aMoi_ = false;
  };
  static constexpr std::chrono::seconds tourMax{20};

  /// Types a text into an agent's box, in turn, and tells what became of it.
  Livraison taper(const FicheAgent& agent, const std::string& texte, bool valider) {
    return taper(agent, {.texte = texte, .valider = valider});
  }
  /// The same; what is in the box already, and whether the program can be read, is known here.
  Livraison taper(const FicheAgent& agent, Saisie::Consigne consigne);

  /// It has a new terminal: nothing of what was typed is in its box.
  void boiteNeuve(const std::string& id) {
    const std::lock_guard verrou(mutex_);
    laisses_.erase(id);
  }
  /// Why the last message could not be given to it, as a clause; empty when it was.
  std::string refusMessage(const std::string& id) {
    const std::lock_guard verrou(mutex_);
    const auto refus = refusMessages_.find(id);
    return refus == refusMessages_.end() ? "" : std::string(description(refus->second));
  }
  void noterMessage(const std::string& id, const Livraison& livraison) {
    const std::lock_guard verrou(mutex_);
    if (livraison.sort == Livraison::Sort::soumis)
      refusMessages_.erase(id);
    else
      refusMessages_[id] = livraison;
  }

  /// While it lives, the terminal and its agent, if it has one, are watched.
  class Guet {
   public:
    Guet(Atelier& atelier, std::string id, IdTerminal terminal);
    Guet(Atelier& atelier, const FicheAgent& agent) : Guet(atelier, agent.id, terminalDe(agent)) {}
    ~Guet();
    Guet(const Guet&) = delete;
    Guet& operator=(const Guet&) = delete;

   private:
    Atelier& atelier_;
    const std::string id_;
    const IdTerminal terminal_;
  };

 private:
  void termine(const IdTerminal& terminal, std::optional<int> statut) override {
    finir(terminal, statut, false);
  }
  void disparu(const IdTerminal& terminal) override { finir(terminal, std::nullopt, true); }
  void ecrit(const IdTerminal&) override;
  void perdu() override;
  /// A program has ended; `parti`: its terminal with it.
  void finir(const IdTerminal& terminal, std::optional<int> statut, bool parti);
  void change(const std::string& id);
  void noter(const std::string& id, const Constat& constat);
  Livraison mener(Saisie& saisie, const FicheAgent& agent, const std::string& texte);

  void battre(const std::lock_guard<std::mutex>&);

  std::mutex mutex_;
  std::condition_variable reveil_;
  std::uint64_t battements_ = 0;
  bool arrete_ = false;
  bool aRelever_ = false;
  struct Vecu {
    std::array<bool, 4> est{};
    std::array<std::uint64_t, 4> passages{};
  };
  std::map<std::string, Vecu> vecus_;
  std::map<std::string, std::deque<std::uint64_t>> files_;
  std::uint64_t dernierTour_ = 0;
  std::mutex mutexRestes_;
  std::deque<std::function<Garde<Fait>()>> restes_;  ///< to be written yet, the oldest first
  struct Laisse {
    std::string pose;    ///< laid in the box, to be gone on with
    std::string soumis;  ///< put into it to be submitted
    std::string vue;     ///< what the box showed of either
  };
  std::map<std::string, Laisse> laisses_;
  std::map<std::string, Livraison> refusMessages_;
};

/// "idle", "besoin", "fini", "mort".
std::string_view raisonDe(Evenement evenement);

std::optional<PorteJSON> donnees(const Json& json);

}  // namespace tarnavelle::Plateau
