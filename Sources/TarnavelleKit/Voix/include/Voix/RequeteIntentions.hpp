// What is asked of the text model that turns a spoken sentence into commands, and what its service answers:
// MoteurIntentions writes the prompt and reads the model's words. Pure functions, safe from any thread.
// Protocol: OpenAI API, "Create chat completion", as many services speak it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Liaison/RequeteHTTP.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/Resultat.hpp"
#include "Voix/MoteurIntentions.hpp"

namespace tarnavelle {

/// Where the text model is.
struct AccesTexte {
  static constexpr const char* cleURL = "TARNAVELLE_TEXTE_URL";
  static constexpr const char* cleSecrete = "TARNAVELLE_TEXTE_CLE";
  static constexpr const char* cleModele = "TARNAVELLE_TEXTE_MODELE";

  std::string url{};  ///< up to what "/chat/completions" follows; https, or http on this machine alone
  std::string cle{};  ///< empty: none is asked
  std::string modele{};

  bool operator==(const AccesTexte&) const = default;

  /// Nothing when no address and no model are set.
  static std::optional<AccesTexte> lire(const Variables& reglages);
  /// Why nothing can be asked there, in French; nothing when it can.
  std::optional<std::string> refus() const;
};

namespace RequeteIntentions {

struct Demande {
  const MondeVoix& monde;
  const std::vector<std::string>& clis;  ///< installed agent programs
  AdresseVoix adresse = AdresseVoix::pressionTouche;
  std::string_view phrase;  ///< as it was spoken
};
RequeteHTTP requete(const AccesTexte& acces, const Demande& demande);

/// The model's words, for `MoteurIntentions::lire`; or why there are none, in French, with what to do.
Resultat<std::string, std::string> reponse(const AccesTexte& acces, int statut, std::string_view corps);

}  // namespace RequeteIntentions
}  // namespace tarnavelle
