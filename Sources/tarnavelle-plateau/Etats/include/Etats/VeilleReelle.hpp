// Follows every agent of the board: reads the logs of their hooks as they grow, looks at a screen when `Suivi`
// wants to see it, and says when a state has changed. A thread of its own does it, once it is started; whoever
// waits may do it, too. No lock is held while a terminal is asked.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Etats/Crochets.hpp"
#include "Etats/GuetFichiers.hpp"
#include "Etats/Regles.hpp"
#include "Etats/Suivi.hpp"
#include "Etats/Veille.hpp"

namespace tarnavelle::Plateau {

class VeilleReelle final : public Veille {
 public:
  using Montre = std::function<Instant()>;

  /// `dossier`: where the hooks' logs are, there already. The terminals must outlive it.
  VeilleReelle(
      Terminaux& terminaux, CatalogueRegles regles, std::filesystem::path dossier,
      Montre montre = [] { return std::chrono::steady_clock::now(); });
  ~VeilleReelle() override;
  VeilleReelle(const VeilleReelle&) = delete;
  VeilleReelle& operator=(const VeilleReelle&) = delete;

  /// An agent's log. Whoever launches the agent gives it to its hooks (`Crochets::branchement`), empty.
  static std::filesystem::path journalDe(const std::filesystem::path& dossier, std::string_view cle);
  std::filesystem::path journal(std::string_view cle) const { return journalDe(dossier_, cle); }

  /// From here on a thread of its own does what is due.
  void demarrer();

  /// What stands in its log already counts: an agent that outlived the door is found as its hooks left it.
  void suivre(const std::string& cle, const std::string& programme, const IdTerminal& terminal) override;
  /// Its log goes with it.
  void oublier(const std::string& cle) override;
  void termine(const std::string& cle, std::optional<int> statut) override;

  Constat constat(const std::string& cle) override;
  LectureEcran lire(const std::string& cle, const Ecran& ecran) override;
  bool saitLire(const std::string& cle) override;
  std::vector<std::string> gardes(const std::string& cle) override;
  Signes signes(const std::string& cle) override;
  std::vector<std::string> depuisConsigne(const std::string& cle,
                                          const std::vector<std::string>& lignes) override;

  void consigne(const std::string& cle, std::string_view texte) override;
  void partie(const std::string& cle, bool commande) override;
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
    Regles regles;
    Suivi suivi;
    JournalCrochets journal;
    std::uint64_t generation = 0;  ///< told from an agent of the same key that came after
    std::uint64_t revisionDite = 0;
    int guets = 0;
    bool regarde = false;  ///< its screen is being asked for
  };

  void modifier(const std::string& cle, const std::function<void(Suivi&, Instant)>& action);
  void lireJournaux(const GuetFichiers::Changements& changements);
  bool regarderUn(Instant maintenant);
  std::vector<std::string> changes();
  void dire();
  void veiller();
  Regles regles(const std::string& cle);

  Terminaux& terminaux_;
  const CatalogueRegles catalogue_;
  const std::filesystem::path dossier_;
  const Montre montre_;
  GuetFichiers guet_;

  std::mutex mutex_;  ///< guards what follows
  std::map<std::string, Suivie> suivies_;
  std::uint64_t generations_ = 0;
  bool arret_ = false;

  std::recursive_mutex
      mutexObservateur_;  ///< held while it is called: once it is replaced it is called no more
  std::function<void(const std::string& cle)> change_;
  std::thread fil_;
};

}  // namespace tarnavelle::Plateau
