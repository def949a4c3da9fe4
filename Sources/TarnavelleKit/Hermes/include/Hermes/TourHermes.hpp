// One turn of a conversation with the remote agent: asks the gateway, delivers the events of its answer in
// their order, and says how it ended, once. A gateway that does not stream but replies with one JSON object is
// understood too. The connection comes from outside; ConversationHermes brings the real one.
//
// `jouer` takes the thread it is called on; interrupting the stream ends it at once, from any thread.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "Hermes/ErreurFluxGateway.hpp"
#include "Hermes/EvenementGateway.hpp"
#include "Hermes/RepliApresCoupure.hpp"
#include "Hermes/RequeteGateway.hpp"
#include "Liaison/FluxLignes.hpp"

namespace tarnavelle {

/// How a turn ended.
struct IssueTour {
  /// The end marker came.
  struct finie {
    bool operator==(const finie&) const = default;
  };
  /// The stream was interrupted.
  struct arretee {
    bool operator==(const arretee&) const = default;
  };
  struct echouee {
    ErreurFluxGateway erreur;
    /// What to do now; nothing when the gateway itself refused.
    std::optional<RepliApresCoupure::Decision> repli;
    bool operator==(const echouee&) const = default;
  };

  std::variant<finie, arretee, echouee> cas;

  bool operator==(const IssueTour&) const = default;
};

class TourHermes {
 public:
  /// Every event but `rien`; may be empty.
  using SurEvenement = std::function<void(const EvenementGateway&)>;

  /// The stream must outlive the turn.
  explicit TourHermes(FluxLignes& flux) : flux_(flux) {}

  /// Once per turn.
  IssueTour jouer(const RequeteGateway::Tour& tour, const SurEvenement& surEvenement);

  /// The user has approved something that the agent asked for during this turn. From any thread.
  void donnerFeuVert() { feuVert_ = true; }

 private:
  IssueTour suivre(const RequeteHTTP& requete, const SurEvenement& surEvenement);
  /// What one line says; how the turn ended, if it did.
  std::optional<IssueTour> entendre(std::string_view ligne, const SurEvenement& surEvenement);
  /// False when nothing was to be read.
  bool recevoir(const LectureGateway& lecture, const SurEvenement& surEvenement);
  IssueTour finir(const SurEvenement& surEvenement);
  void noter(const EvenementGateway& evenement);
  IssueTour couper(ErreurFluxGateway erreur) const;
  IssueTour perdre(ErreurReseau erreur) const;

  FluxLignes& flux_;
  RepliApresCoupure::Vus vus_;
  /// The agent may have acted, whatever was seen of it: asking elsewhere could do it twice.
  bool aPuAgir_ = false;
  bool commencee_ = false;              ///< a line that says something has come
  std::optional<std::string> entiere_;  ///< the reply so far, of a gateway that does not stream
  std::atomic<bool> feuVert_ = false;
};

}  // namespace tarnavelle
