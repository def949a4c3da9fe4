// Everything that is set for Hermès, for the board's own alerts, which go the same way, and for the second Mac
// that the board steers: the environment first, else a private file of KEY=VALUE lines, under the same names.
// Tells where each came from, and shows no secret. A plain value, for any thread while none changes it.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "Hermes/ReglageNtfy.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/Reglages.hpp"
#include "Socle/Resultat.hpp"

namespace tarnavelle {

class ReglagesHermes : public Reglages {
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

  static const Famille& famille();
  static std::span<const Cle> cles() { return famille().cles; }
  /// Null when nothing bears that name.
  static const Cle* cle(std::string_view nom) { return famille().cle(nom); }
  /// "tarnavelle/reglages" among the user's settings.
  static std::filesystem::path chemin(const Variables& environnement) {
    return famille().chemin(environnement);
  }
  static ReglagesHermes lire(const Variables& environnement) {
    return ReglagesHermes(Reglages::lire(environnement, famille()));
  }
  static Resultat<Fait, std::string> regler(const Variables& environnement, std::string_view nom,
                                            std::string_view valeur) {
    return Reglages::regler(environnement, famille(), nom, valeur);
  }

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

 private:
  explicit ReglagesHermes(Reglages lus) : Reglages(std::move(lus)) {}
};

}  // namespace tarnavelle
