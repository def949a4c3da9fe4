// What the gateway tells during a chat turn: each payload of its stream is one event, in the shapes of chat
// completions and of the agent's own events. Never fails: a payload that tells nothing usable is `rien`.
// A key in the object itself wins over the same or another in a nested object. Safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Socle/Date.hpp"

namespace tarnavelle {

/// Something that the agent will not do without the user's consent.
struct DemandeApprobationHermes {
  std::string id;     ///< never empty
  std::string outil;  ///< empty when the request does not say
  std::string titre;  ///< empty when the request has none
  std::optional<std::string> detail;
  std::optional<Date::Instant> expiration;

  bool operator==(const DemandeApprobationHermes&) const = default;
};

enum class DecisionApprobation { approuver, rejeter };

struct EvenementGateway {
  /// A piece of the reply.
  struct texte {
    std::string morceau;
    bool operator==(const texte&) const = default;
  };
  /// A tool starts.
  struct outil {
    std::string nom;
    std::optional<std::string> chemin;  ///< what it works on, when its arguments name a path
    bool operator==(const outil&) const = default;
  };
  struct outilFini {
    std::string nom;
    bool operator==(const outilFini&) const = default;
  };
  /// The conversation's identifier.
  struct session {
    std::string id;
    bool operator==(const session&) const = default;
  };
  struct approbation {
    DemandeApprobationHermes demande;
    bool operator==(const approbation&) const = default;
  };
  struct approbationTranchee {
    std::string id;
    DecisionApprobation decision = DecisionApprobation::rejeter;
    bool operator==(const approbationTranchee&) const = default;
  };
  struct erreur {
    std::string message;
    bool operator==(const erreur&) const = default;
  };
  struct rien {
    bool operator==(const rien&) const = default;
  };

  std::variant<texte, outil, outilFini, session, approbation, approbationTranchee, erreur, rien> cas;

  bool operator==(const EvenementGateway&) const = default;

  static EvenementGateway lire(std::string_view charge);
};

/// All that a payload tells, where `EvenementGateway::lire` keeps the first thing.
struct LectureGateway {
  enum class Forme {
    morceau,  ///< an event of a stream
    entiere,  ///< the whole reply of a gateway that does not stream
  };

  std::vector<EvenementGateway> evenements;  ///< in their order; `rien` is not among them
  /// The agent may have begun to act, even if no event says so: a tool call whose name is yet to come, an
  /// approval settled one does not know how.
  bool aPuAgir = false;

  bool operator==(const LectureGateway&) const = default;

  static LectureGateway lire(std::string_view charge, Forme forme = Forme::morceau);
};

}  // namespace tarnavelle
