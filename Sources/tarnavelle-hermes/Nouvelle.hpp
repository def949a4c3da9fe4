// What the threads of a conversation tell the one that shows it: what Hermès says, what became of a turn, the
// signals of the process. Plain values.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "Hermes/EvenementGateway.hpp"
#include "Terminal/Courrier.hpp"

namespace tarnavelle {

/// How a turn ended.
struct IssueEntretien {
  enum class Cas {
    finie,
    arretee,      ///< by us
    echouee,      ///< refused, or cut
    injoignable,  ///< nothing was heard, and nothing can have been done
  };
  Cas cas = Cas::finie;
  std::string raison{};  ///< in French: sentences; empty for `finie`, and where Hermès said it himself
  bool operator==(const IssueEntretien&) const = default;
};

struct Nouvelle {
  struct evenement {
    EvenementGateway evenement;
  };
  /// What the operator is to know: a sentence.
  struct note {
    std::string texte;
  };
  /// The answer to a request for approval has arrived; or it may not have, and why: a sentence.
  struct verdict {
    std::string id;
    DecisionApprobation decision;
    std::optional<std::string> refus;
  };
  /// The way is open: the message leaves once `Entretien::partir` is called.
  struct depart {};
  struct fin {
    IssueEntretien issue;
  };
  struct signal {
    int numero;
  };

  std::variant<evenement, note, verdict, depart, fin, signal> cas;
};

using Courrier = CourrierDe<Nouvelle>;

}  // namespace tarnavelle
