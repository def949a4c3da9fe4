// One verb of the control door as it is shown to a model: its French description and its parameters.
// Plain values; the table of verbs itself is in TableVerbes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {

struct ParamVoix {
  /// JSON type of an argument. Numbers are published as texts and parsed by the decoder.
  enum class Genre { texte, booleen };

  std::string nom;  ///< argument key, snake_case ASCII
  Genre genre = Genre::texte;
  std::string description;  ///< one line of French help
  bool requis = false;

  bool operator==(const ParamVoix&) const = default;
};

/// JSON-schema name of a genre: "string" or "boolean".
std::string_view valeurBrute(ParamVoix::Genre genre);

/// The genre of exactly that JSON-schema name.
std::optional<ParamVoix::Genre> genreDepuis(std::string_view valeurBrute);

struct OutilVoix {
  std::string nom;          ///< snake_case ASCII
  std::string description;  ///< French, written for a model that must pick the right tool
  std::vector<ParamVoix> parametres;

  bool operator==(const OutilVoix&) const = default;

  /// JSON schema of the arguments: "type", "properties" and "required", the last always present.
  Json schema() const;

  /// The verb as a function tool of a model service: "type", "name", "description", "parameters".
  Json json() const;
};

}  // namespace tarnavelle
