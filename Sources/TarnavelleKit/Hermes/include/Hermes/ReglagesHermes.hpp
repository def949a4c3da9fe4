// Everything that is set for Hermès, for the board's own alerts, which go the same way, and for the second Mac
// that the board steers: the environment first, else a private file of KEY=VALUE lines, under the same names.
// Tells where each came from, and shows no secret. A plain value, for any thread while none changes it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Hermes/ReglageNtfy.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle {

class ReglagesHermes {
 public:
  static constexpr std::string_view clePasserelle = "HERMES_GATEWAY_URL";
  static constexpr std::string_view cleSecrete = "HERMES_GATEWAY_CLE";
  static constexpr std::string_view cleHote = "HERMES_GATEWAY_HOTE";
  static constexpr std::string_view cleTopicAlertes = "TARNAVELLE_NTFY_TOPIC";
  static constexpr std::string_view cleServeurAlertes = "TARNAVELLE_NTFY_SERVEUR";
  static constexpr std::string_view cleJetonAlertes = "TARNAVELLE_NTFY_JETON";
  static constexpr std::string_view cleDetailAlertes = "TARNAVELLE_NTFY_DETAIL";
  static constexpr std::string_view clePlateauDistant = "TARNAVELLE_PLATEAU_DISTANT";

  /// What the board's alerts are called, and so told from notices where they share a topic.
  static constexpr std::string_view titreAlertes = "Tarnavelle";

  static constexpr std::size_t tailleMax = std::size_t{64} * 1024;  ///< bytes of the file
  static constexpr std::size_t valeurMax = 4096;                    ///< bytes of a value

  /// What can be set.
  struct Cle {
    std::string_view nom;
    std::string_view objet;  ///< in French, for a list
    enum class Vue { entiere, topic, cachee } vue = Vue::entiere;
  };
  static std::span<const Cle> cles();
  /// Null when nothing bears that name.
  static const Cle* cle(std::string_view nom);

  /// "tarnavelle/reglages" among the user's settings.
  static std::filesystem::path chemin(const Variables& environnement);

  static ReglagesHermes lire(const Variables& environnement);

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
  /// As it may be shown: a secret by its length alone, an address without the name and password it may hold.
  std::string montrable(const Cle& cle) const;

  /// All that is set, for those who read an environment.
  Variables variables() const;

  /// Where Hermès is listened to.
  ReglageNtfy ntfy() const;
  /// Where the board's own alerts go.
  ReglageNtfy alertes() const;

  /// How Hermès is reached to be talked to.
  struct Passerelle {
    std::string url;   ///< empty: by the host
    std::string cle;   ///< empty: none, or the host's own environment tells it
    std::string hote;  ///< empty: none
    std::optional<std::string> modele;
    bool operator==(const Passerelle&) const = default;
  };
  Passerelle passerelle() const;
  /// Why that address cannot be talked to, in French; nothing when it can. In the clear on this machine alone:
  /// the key travels with each request.
  static std::optional<std::string> refusPasserelle(std::string_view url);

  /// The host that Hermès is reached by: as it is asked for, else as it is set; empty when an address is set.
  std::string hotePour(const std::string& hote) const;
  /// Why he cannot be talked to there, in French; nothing when it can be tried.
  std::optional<std::string> refusVoie(const std::string& hote) const;
  /// By what a conversation with him is known: that host, or the address's.
  std::string lieu(const std::string& hote) const;

  /// Puts a value into the file, or takes it out when it is empty; the rest of the file stays as it is. Or why
  /// not, in French.
  static Resultat<Fait, std::string> regler(const Variables& environnement, std::string_view nom,
                                            std::string_view valeur);

 private:
  std::map<std::string, Valeur, std::less<>> valeurs_;
  std::vector<std::string> plaintes_;
};

}  // namespace tarnavelle
