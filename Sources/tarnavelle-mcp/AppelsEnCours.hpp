// The tool calls that the door is asked for, several at once: what only looks side by side, what waits side by
// side in numbers, and all else one after the other, in the order in which it came. From any thread.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Ecrivain.hpp"
#include "Porte/MCPEtendu.hpp"
#include "Porte/PorteMCP.hpp"
#include "Repartiteur.hpp"
#include "Reseau/FaisceauHTTP.hpp"

namespace tarnavelle {

/// One tool call as it came.
struct DemandeAppel {
  Json id;
  std::optional<Json> jeton = {};  ///< its progress is to be told under that name
  MCPEtendu::Version version = MCPEtendu::derniere;
  std::shared_ptr<Destination> destination;
  const LigneVerbe* ligne = nullptr;               ///< null for a verb that the table has not
  std::string corps = {};                          ///< what the door is sent
  std::optional<std::chrono::seconds> delai = {};  ///< how long the verb may take, when it is one that waits
};

class AppelsEnCours {
 public:
  /// Calls that wait for their turn, and bytes of them, beyond which more are refused.
  static constexpr std::size_t enFileMax = 1024;
  static constexpr std::size_t octetsMax = 64 * 1024 * 1024;
  /// Between two signs of progress.
  static constexpr std::chrono::seconds cadence{2};

  AppelsEnCours(const Repartiteur::Monde& monde, Ecrivain& ecrivain,
                std::chrono::milliseconds battement = cadence);

  /// With `entree`, where the next line will come from, the only call under way is waited for here until it
  /// comes.
  void ajouter(DemandeAppel demande, std::optional<int> entree = {});

  /// The client no longer wants the reply. A call in line is dropped; a wait under way is given up, and the
  /// door sees its connection close; any other is carried to its end, unanswered. An id that is not under way
  /// is none.
  void annuler(const Json& id);

  /// The client has nothing more to say: waits end with a refusal, all else is answered first.
  void finir();

 private:
  /// What may run beside what.
  enum class Voie { geste, regard, attente };
  struct Couloir {
    std::size_t maximum;
    std::size_t enCours = 0;
    std::deque<std::uint64_t> file = {};
  };
  struct Appel {
    DemandeAppel demande;
    Voie voie;
    std::chrono::steady_clock::time_point debut;
    bool parti = false;
    std::optional<FaisceauHTTP::Numero> numero = {};  ///< once it has left
    bool annule = false;
    bool rendu = false;  ///< its reply is being written
  };
  using Appels = std::map<std::uint64_t, Appel>;

  static Voie voieDe(const DemandeAppel& demande);
  Couloir& couloir(Voie voie) { return couloirs_[static_cast<std::size_t>(voie)]; }
  void avancer(std::optional<int> entree = {});
  void partir(std::uint64_t rang, std::optional<int> entree);
  void terminer(std::uint64_t rang, const PorteMCP::ResultatAppel& resultat);
  DemandeAppel retirer(Appels::iterator appel);
  DemandeAppel delaisser(Appels::iterator appel);
  void battre();
  static void repondre(const DemandeAppel& demande, const PorteMCP::ResultatAppel& resultat);

  const Repartiteur::Monde monde_;
  Ecrivain& ecrivain_;
  std::mutex verrou_;
  std::condition_variable vide_;
  Appels appels_;
  std::array<Couloir, 3> couloirs_ = {{{.maximum = 1}, {.maximum = 16}, {.maximum = 100}}};
  std::uint64_t dernier_ = 0;
  std::size_t enFile_ = 0;
  std::size_t octets_ = 0;
  FaisceauHTTP faisceau_;  ///< last: its thread ends before what it touches
};

}  // namespace tarnavelle
