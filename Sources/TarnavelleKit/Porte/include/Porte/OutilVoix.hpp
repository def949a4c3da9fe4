// One verb of the control door as it is shown to a model: its French description and its parameters,
// and how the words of a command line fill them. Plain values, for any thread while none changes them; the
// table of verbs itself is in TableVerbes, the splitting of a command line in the client.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/JSON.hpp"

namespace tarnavelle {

struct ParamVoix {
  /// JSON type of an argument. Numbers are published as texts and parsed by the decoder.
  enum class Genre { texte, booleen };

  std::string nom;  ///< argument key, snake_case ASCII
  Genre genre = Genre::texte;
  std::string description;  ///< one line of French help
  bool requis = false;

  bool operator==(const ParamVoix&) const = default;

  /// The name as an option shows it, less its leading dashes: "depuis-prompt".
  std::string avecTirets() const;

  /// Whether a command line that gives that name, as it is or dashed, means this parameter.
  bool estNomme(std::string_view nom) const;
};

/// JSON-schema name of a genre: "string" or "boolean".
std::string_view valeurBrute(ParamVoix::Genre genre);

/// The genre of exactly that JSON-schema name.
std::optional<ParamVoix::Genre> genreDepuis(std::string_view valeurBrute);

/// A command line once split. Names stand without their leading dashes, as they are or dashed
/// ("depuis_prompt", "depuis-prompt").
struct MotsCLI {
  std::vector<std::string> positionnels;
  std::map<std::string, std::string, std::less<>> options;  ///< those given with a value
  std::set<std::string, std::less<>> drapeaux;              ///< those given without
};

struct OutilVoix {
  std::string nom;          ///< snake_case ASCII
  std::string description;  ///< French, written for a model that must pick the right tool
  std::vector<ParamVoix> parametres;

  bool operator==(const OutilVoix&) const = default;

  /// JSON schema of the arguments: "type", "properties" and "required", the last always present.
  Json schema() const;

  /// The names, as they are and dashed, that a command line takes without a value: the booleans.
  std::set<std::string, std::less<>> drapeauxBooleens() const;

  /// The texts in the order in which the words of a command line fill them: the required ones first.
  std::vector<const ParamVoix*> textes() const;

  /// The arguments that a command line gives. A boolean's value is true unless it is "false", whatever
  /// its case. Words fill the texts that no option gave, the required ones first; surplus ones are dropped.
  Json arguments(const MotsCLI& mots) const;

  /// The verb as a function tool of a model service: "type", "name", "description", "parameters".
  Json json() const;
};

}  // namespace tarnavelle
