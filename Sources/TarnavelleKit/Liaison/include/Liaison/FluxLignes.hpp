// A stream of lines that a server holds open, as those who follow it see it: ask, read, wait, stop. What a
// line says is their business; how it travels is that of whoever brings one (FluxHTTP, or a test's world).
//
// One thread follows the stream; `interrompre` and `interrompu` alone may be called from any other.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>
#include <variant>

#include "Liaison/ErreurReseau.hpp"
#include "Liaison/RequeteHTTP.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle {

/// What came over a stream.
struct LectureFlux {
  /// A line, without its end: a view valid until the next call.
  struct ligne {
    std::string_view texte;
    bool operator==(const ligne&) const = default;
  };
  /// Nothing, in the time given.
  struct attente {
    bool operator==(const attente&) const = default;
  };
  /// The server ended it in order.
  struct fin {
    bool operator==(const fin&) const = default;
  };
  /// A line longer than what is read (`LecteurLignesFlux::ligneMax`), passed over: the next ones follow.
  struct tropLongue {
    bool operator==(const tropLongue&) const = default;
  };
  /// The connection holds, but what comes cannot be read as lines: encoded although nobody asked.
  struct illisible {
    bool operator==(const illisible&) const = default;
  };
  /// The connection failed, or the server was silent for longer than the request allows.
  struct perte {
    ErreurReseau erreur = ErreurReseau::autre;
    bool operator==(const perte&) const = default;
  };

  std::variant<ligne, attente, tropLongue, fin, illisible, perte> cas;

  bool operator==(const LectureFlux&) const = default;
};

class FluxLignes {
 public:
  virtual ~FluxLignes() = default;

  /// Closes the stream that was open, if any, and opens this one. The status of the answer, whatever it is.
  virtual Resultat<int, ErreurReseau> ouvrir(const RequeteHTTP& requete) = 0;

  /// What comes next, waited for as long as it takes or for that long. After an end, the same end again.
  virtual LectureFlux suivante(std::optional<std::chrono::milliseconds> attente = {}) = 0;

  virtual void fermer() = 0;

  /// The wait between two tries.
  virtual void pauser(std::chrono::milliseconds duree) = 0;

  /// Ends at once, with `annulee`, what is under way and whatever is asked for afterwards.
  virtual void interrompre() = 0;
  virtual bool interrompu() const = 0;
};

}  // namespace tarnavelle
