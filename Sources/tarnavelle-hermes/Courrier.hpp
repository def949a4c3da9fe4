// What the threads of a conversation tell the one that shows it: what Hermès says, what became of a turn, the
// signals of the process. Safe from any thread; one takes.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

#include "Hermes/EvenementGateway.hpp"

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

class Courrier {
 public:
  Courrier();
  ~Courrier();
  Courrier(const Courrier&) = delete;
  Courrier& operator=(const Courrier&) = delete;

  void poster(Nouvelle nouvelle);
  /// Waits while much is still to be taken: who floods goes no faster than who shows. Hold no lock.
  void attendrePlace();
  /// Nobody takes any more: nobody waits.
  void fermer();
  /// What has come, in its order.
  std::deque<Nouvelle> prendre();
  /// Readable while something waits to be taken.
  int descripteur() const { return tube_[0]; }

 private:
  int tube_[2] = {-1, -1};
  std::mutex verrou_;
  std::condition_variable place_;
  bool ferme_ = false;
  std::deque<Nouvelle> nouvelles_;
};

/// The process's signals become news, on a thread that lasts as long as the process. To be called before any
/// other thread is started. A second interruption within two seconds ends the process, whatever is under way.
void suivreSignaux(std::shared_ptr<Courrier> courrier);

}  // namespace tarnavelle
