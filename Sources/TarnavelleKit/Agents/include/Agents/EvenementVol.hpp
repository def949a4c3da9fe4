// What the flight log of a claude agent says: the lines that its hooks appended, decoded into events.
// Safe from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Socle/JSON.hpp"

namespace tarnavelle {

/// One event of the flight. Texts are trimmed and clipped.
struct EvenementVol {
  /// The user's prompt, never empty.
  struct consigne {
    std::string texte;
    bool operator==(const consigne&) const = default;
  };
  /// A tool about to run.
  struct outil {
    std::string nom;
    std::string resume;  ///< what it works on; may be empty
    bool operator==(const outil&) const = default;
  };
  /// The agent asks for attention.
  struct besoin {
    std::string message;  ///< may be empty
    bool operator==(const besoin&) const = default;
  };
  /// The agent's reply, out of its transcript.
  struct reponse {
    std::string texte;
    bool operator==(const reponse&) const = default;
  };
  struct demarre {
    bool operator==(const demarre&) const = default;
  };
  struct fini {
    bool operator==(const fini&) const = default;
  };
  /// Any other hook.
  struct inconnu {
    bool operator==(const inconnu&) const = default;
  };

  std::variant<consigne, outil, besoin, reponse, demarre, fini, inconnu> cas;

  bool operator==(const EvenementVol&) const = default;
};

namespace CarnetDeVol {

inline constexpr std::size_t bulleMax = 500;  ///< characters kept of a text

struct ObjetDecode {
  EvenementVol evenement;
  std::optional<std::string> transcript;  ///< path of the agent's transcript
};

/// One line of the log: what each hook's object says. A hook writes its object and its line feed apart, so
/// those that fire at once may share a line, cut one another, and leave empty lines.
std::vector<ObjetDecode> decoder(std::string_view ligne);

/// The event of a hook's name and fields.
EvenementVol evenement(std::string_view nom, const Json& d);

struct Lecture {
  std::vector<EvenementVol> evenements;   ///< without `inconnu`
  std::size_t consommes = 0;              ///< bytes by which the cursor moves on
  std::optional<std::string> transcript;  ///< the last path that the slice tells
};

/// Decodes a slice of the log. Only complete lines are decoded; what is unreadable in them is consumed.
Lecture lire(std::string_view data);

struct SansEcho {
  std::vector<EvenementVol> evenements;
  bool echoConsomme = false;
};

/// Removes the first prompt that equals `echo`, which the cockpit typed itself.
SansEcho sansEcho(std::vector<EvenementVol> recus, const std::optional<std::string>& echo);

}  // namespace CarnetDeVol
}  // namespace tarnavelle
