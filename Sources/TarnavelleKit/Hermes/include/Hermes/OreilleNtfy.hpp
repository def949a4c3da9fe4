// The cockpit's ear on Hermès: carries the subscription's life out (connecting, open, opened afresh every hour,
// waiting after a failure, given up) as AbonnementNtfy decides it, and delivers each notice once. The
// connection, the waits and the clock come from outside; EcouteNtfy brings the real ones.
//
// `ecouter` takes the thread it is called on; interrupting the stream ends it at once, from any thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Hermes/AbonnementNtfy.hpp"
#include "Hermes/AcquisNtfy.hpp"
#include "Hermes/JournalIdsNtfy.hpp"
#include "Hermes/MessageNtfy.hpp"
#include "Hermes/ReglageNtfy.hpp"
#include "Liaison/FluxLignes.hpp"

namespace tarnavelle {

class OreilleNtfy {
 public:
  using Secondes = AbonnementNtfy::Secondes;
  /// The time since some fixed moment, which never goes back and goes on while the machine sleeps.
  using Horloge = std::function<Secondes()>;

  struct Etat {
    struct connexion {
      bool operator==(const connexion&) const = default;
    };
    /// The server has given its first sign of life.
    struct ouverte {
      bool operator==(const ouverte&) const = default;
    };
    /// Something longer than any notice came, and was passed over.
    struct ligneSautee {
      bool operator==(const ligneSautee&) const = default;
    };
    /// Another attempt follows.
    struct attente {
      EchecNtfy echec;
      Secondes recul{0};
      bool operator==(const attente&) const = default;
    };

    std::variant<connexion, ouverte, ligneSautee, attente> cas;

    bool operator==(const Etat&) const = default;
  };

  /// Called on the thread that listens; any may be empty.
  struct Rappels {
    std::function<void(const MessageNtfy&)> surMessage;
    std::function<void(const Etat&)> surEtat;
    /// The server has given a sign of life; a notice was told just before.
    std::function<void()> surSigne{};
  };

  /// Why the ear no longer listens.
  struct Fin {
    /// There is nothing to listen to: the setting is refused, or this cockpit never listens.
    struct fermee {
      bool operator==(const fermee&) const = default;
    };
    /// The stream was interrupted.
    struct arretee {
      bool operator==(const arretee&) const = default;
    };
    struct abandonnee {
      std::string message;  ///< in French, for the operator
      bool operator==(const abandonnee&) const = default;
    };

    std::variant<fermee, arretee, abandonnee> cas;

    bool operator==(const Fin&) const = default;
  };

  struct Cockpit {
    bool headless = false;
    bool demo = false;
  };

  /// What an ear leaves to the next one, so that it misses nothing and repeats nothing.
  struct Souvenir {
    std::optional<Secondes> age;   ///< every notice published longer ago has come; nothing: catch nothing up
    std::vector<std::string> ids;  ///< of the last notices delivered, oldest first
    bool operator==(const Souvenir&) const = default;
  };

  /// Notices that are known when they come again: five a second for the longest catch-up.
  static constexpr int memoire = 10'000;

  /// The stream must outlive the ear.
  OreilleNtfy(FluxLignes& flux, Horloge horloge, Rappels rappels);

  /// May be called again once it has ended: attempts count anew, notices already delivered stay known. Catches
  /// up from `souvenir` on, to whose age its owner has added the time that has passed since.
  Fin ecouter(const ReglageNtfy& reglage, const Cockpit& cockpit, const Souvenir& souvenir = {});

  /// As of now, on the thread that listens or once it has ended.
  Souvenir souvenir() const;

 private:
  struct rotation {};
  struct arret {};
  using Issue = std::variant<rotation, arret, EchecNtfy>;

  /// One connection, from its opening to its end.
  Issue suivre(const RequeteHTTP& requete, std::string_view topic);
  void entendre(std::string_view ligne, std::string_view topic);
  void dire(Etat etat) const;

  FluxLignes& flux_;
  Horloge horloge_;
  Rappels rappels_;
  JournalIdsNtfy journal_{memoire};
  AcquisNtfy acquis_;
  int tentative_ = 0;
  bool ouverte_ = false;
};

}  // namespace tarnavelle
