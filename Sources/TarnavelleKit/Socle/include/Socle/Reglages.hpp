// What a user sets for a family of programs: the environment first, else a private file of KEY=VALUE lines,
// under the same names. Which keys there are is told by the family. Tells where each value came from, and shows
// no secret. A plain value, for any thread while none changes it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/Environnement.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle {

class Reglages {
 public:
  static constexpr std::size_t tailleMax = std::size_t{64} * 1024;  ///< bytes of the file
  static constexpr std::size_t valeurMax = 4096;                    ///< bytes of a value

  /// As it may be shown: an address without the name and password it may hold; a secret by its length alone.
  static std::string enClair(const std::string& valeur);
  static std::string enSecret(const std::string& valeur);

  /// What can be set.
  struct Cle {
    std::string_view nom;
    std::string_view objet;  ///< in French, for a list
    std::string (*montrer)(const std::string& valeur) = enClair;
  };

  struct Famille {
    std::string_view fichier;  ///< its name
    std::span<const Cle> cles;

    /// Null when nothing bears that name.
    const Cle* cle(std::string_view nom) const;
    /// The file, in the folder "tarnavelle" among the user's settings.
    std::filesystem::path chemin(const Variables& environnement) const;
  };

  static Reglages lire(const Variables& environnement, const Famille& famille);

  /// What the operator has to be told of the file: sentences. A file that others could read, or that is not the
  /// user's own, is not read at all, and that is one of them.
  const std::vector<std::string>& plaintes() const { return plaintes_; }

  enum class Source { environnement, fichier };
  struct Valeur {
    std::string texte;  ///< trimmed, not empty
    Source source = Source::fichier;
    bool operator==(const Valeur&) const = default;
  };
  /// Nothing when it is not set.
  const Valeur* valeur(std::string_view nom) const;
  std::optional<std::string> texte(std::string_view nom) const;
  std::string montrable(const Cle& cle) const;

  /// All that is set, for those who read an environment.
  Variables variables() const;

  /// Puts a value into the file, or takes it out when it is empty; the rest of the file stays as it is. Or why
  /// not, in French.
  static Resultat<Fait, std::string> regler(const Variables& environnement, const Famille& famille,
                                            std::string_view nom, std::string_view valeur);

 private:
  std::map<std::string, Valeur, std::less<>> valeurs_;
  std::vector<std::string> plaintes_;
};

}  // namespace tarnavelle
