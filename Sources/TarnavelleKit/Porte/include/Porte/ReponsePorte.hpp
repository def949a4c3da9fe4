// What the control door answers, and the closed JSON value its payload is made of.
// Decoding failures are empty optionals. Plain values, for any thread while none changes them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Socle/JSON.hpp"

namespace tarnavelle {

/// A JSON value in seven cases. Equality ignores the order of an object's members.
struct PorteJSON {
  struct bool_ {
    bool valeur = false;
    bool operator==(const bool_&) const = default;
  };
  struct entier {
    std::int64_t valeur = 0;
    bool operator==(const entier&) const = default;
  };
  struct reel {
    double valeur = 0;
    bool operator==(const reel&) const = default;
  };
  struct texte {
    std::string valeur;
    bool operator==(const texte&) const = default;
  };
  struct tableau {
    std::vector<PorteJSON> valeurs;
    bool operator==(const tableau&) const = default;
  };
  struct objet {
    std::map<std::string, PorteJSON, std::less<>> membres;
    // Written out for clang 14, which would default it while PorteJSON is still incomplete.
    bool operator==(const objet& autre) const { return membres == autre.membres; }
  };
  struct nul {
    bool operator==(const nul&) const = default;
  };

  std::variant<nul, bool_, entier, reel, texte, tableau, objet> cas;

  bool operator==(const PorteJSON&) const = default;

  /// A number that a signed 64-bit integer holds exactly is an `entier` however it is written; any
  /// other is a `reel`. Nothing for what is not a JSON value ("PorteJSON illisible").
  static std::optional<PorteJSON> depuis(const Json& json);
  Json json() const;
};

/// The reply of the door to one verb. The members are the keys of the JSON object.
struct ReponsePorte {
  bool ok = false;
  std::optional<std::string> spoken_text;  ///< short French sentence to be said aloud
  std::optional<PorteJSON> data;
  std::optional<std::string> error;  ///< French reason of a refusal

  bool operator==(const ReponsePorte&) const = default;

  static ReponsePorte succes(std::optional<std::string> spoken = {}, std::optional<PorteJSON> data = {});
  static ReponsePorte echec(std::string message);
  /// The refusal of a verb that is in the table and not wired yet: "pas encore câblé".
  static const ReponsePorte pasCable;

  /// Nothing when "ok" is missing or mistyped, or another known key is mistyped. null counts as absent.
  static std::optional<ReponsePorte> depuis(const Json& json);
  static std::optional<ReponsePorte> lire(std::string_view texte);

  /// Absent members are left out.
  Json json() const;
};

namespace ComptesRendusVoix {
/// The sentence said for a reply of another Mac's door.
std::string porteDit(const ReponsePorte& reponse);
}  // namespace ComptesRendusVoix

}  // namespace tarnavelle
