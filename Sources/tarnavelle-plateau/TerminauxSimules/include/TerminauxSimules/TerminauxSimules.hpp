// Terminals without programs: agents that live by the clock, for the tests and the trial door. An instruction
// makes one work for `dureeTravail`, then it says so and rests; "exit" ends it; one that begins with "demande "
// makes it open a dialog, which "o" or "n" closes. `VeilleSimulee` knows what they do because it asks them.
//
// Safe from any thread. The clock is asked, never waited for: `actualiser` brings what time alone changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Etats/Veille.hpp"
#include "Terminaux/Terminaux.hpp"
#include "Verbes/Moyens.hpp"

namespace tarnavelle::Plateau {

class TerminauxSimules final : public Terminaux {
 public:
  static constexpr std::chrono::seconds dureeTravail{3};
  static constexpr std::size_t lignesMax = 40;       ///< the bottom of the screen is all that is kept
  static constexpr std::size_t caracteresMax = 200;  ///< longest line kept

  explicit TerminauxSimules(std::function<Instant()> maintenant) : maintenant_(std::move(maintenant)) {}

  Instant maintenant() const { return maintenant_(); }

  Ou<std::vector<Terminal>> lister() override;
  Ou<Terminal> ouvrir(const Lancement& lancement) override;
  Ou<Terminal> relancer(const IdTerminal& id, const Lancement& lancement) override;
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
  void observer(Observateur* observateur) override;

  /// What the agent of that terminal is doing.
  struct Vie {
    Etat etat = Etat::sorti;
    Instant depuis{};
    std::string saisie;          ///< typed and not sent
    std::uint64_t soumises = 0;  ///< instructions received
  };
  Vie vie(const IdTerminal& id);

  /// Ends the work whose time has come; gives the terminals of those that it changed.
  std::vector<IdTerminal> actualiser(Instant maintenant);
  std::optional<Instant> finDuTravail();

 private:
  struct Simule {
    Terminal terminal;
    Etat etat = Etat::repos;
    Instant depuis{};
    Instant fin{};
    std::string saisie;
    std::string consigne;
    std::uint64_t soumises = 0;
    std::uint64_t revision = 0;
    std::deque<std::string> lignes;
    int guets = 0;

    void naitre(const Lancement& lancement, Instant maintenant);
    void afficher(std::string_view texte);
    void passer(Etat vers, Instant maintenant);
    void soumettre(Instant maintenant);
    void presser(const Touche& touche, Instant maintenant);
  };
  Simule* chercher(const IdTerminal& id);
  Ou<Fait> agir(const IdTerminal& id, const std::function<Ou<Fait>(Simule&)>& geste);

  const std::function<Instant()> maintenant_;
  std::mutex mutex_;
  std::map<IdTerminal, Simule> simules_;
  std::uint64_t dernier_ = 0;
  Observateur* observateur_ = nullptr;
};

/// What those agents are doing, from themselves.
class VeilleSimulee final : public Veille {
 public:
  explicit VeilleSimulee(TerminauxSimules& terminaux) : terminaux_(terminaux) {}

  void suivre(const std::string& cle, const std::string& programme, const IdTerminal& terminal) override;
  void oublier(const std::string& cle) override;
  void termine(const std::string& cle, std::optional<int> statut) override;
  Constat constat(const std::string& cle) override;
  LectureEcran lire(const std::string& cle, const Ecran& ecran) override;
  bool saitLire(const std::string& cle) override;
  std::vector<std::string> gardes(const std::string& cle) override;
  std::vector<std::string> depuisConsigne(const std::string& cle,
                                          const std::vector<std::string>& lignes) override;
  void consigne(const std::string& cle, std::string_view texte) override;
  void touches(const std::string& cle, const std::vector<Touche>& touches) override;
  void declarerFini(const std::string& cle) override;
  void declarerBloque(const std::string& cle, std::string_view raison) override;
  void guetter(const std::string& cle) override;
  void laisser(const std::string& cle) override;
  void actualiser(Instant maintenant) override;
  std::optional<Instant> prochainRegard() override;
  void observer(std::function<void(const std::string& cle)> change) override;

 private:
  struct Suivie {
    IdTerminal terminal;
    std::string programme;
    std::uint64_t avant = 0;  ///< instructions received before the last one
    std::optional<Situation> declaree;
  };
  void declarer(const std::string& cle, Etat etat, std::string element);
  void dire(const std::string& cle);
  /// A copy: nothing of it is asked of the terminals under the lock.
  Suivie suivie(const std::string& cle);

  TerminauxSimules& terminaux_;
  std::mutex mutex_;
  std::map<std::string, Suivie> suivies_;
  std::function<void(const std::string&)> change_;
};

/// Programs that need not be installed; no shell.
class LanceursSimules final : public Lanceurs {
 public:
  std::optional<std::string> usuel() override;
  Resultat<Depart, std::string> agent(const Embarquement& embarquement) override;
  std::optional<Lancement> shell(const std::string& cle, const std::string& session,
                                 const std::string& commande, const std::string& dossier) override;
};

}  // namespace tarnavelle::Plateau
