// The model's tools, carried out at the board's door: what each call asks there, and what the model is told of
// it. A free request goes through the intent engine where a text model is set, else to the verb that takes any;
// a verdict answers the one agent that waits, of several the one whose screen was read. Safe from any thread;
// the caller waits.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Plateau.hpp"
#include "Porte.hpp"
#include "Voix/FileAppelsRealtime.hpp"
#include "Voix/IntentionTarnavelle.hpp"
#include "Voix/MondeVoix.hpp"
#include "Voix/RequeteIntentions.hpp"

namespace tarnavelle::Voix {

class Outils {
 public:
  /// Of a screen, given to the model: its end, in user-perceived characters.
  static constexpr std::size_t texteMax = 6000;

  Outils(std::shared_ptr<const Porte> porte, std::optional<AccesTexte> modeleTexte)
      : porte_(std::move(porte)), modeleTexte_(std::move(modeleTexte)) {}

  /// What the model is told, in French. Never empty.
  std::string executer(const FileAppelsRealtime::Appel& appel);

  /// The board as it was last seen, for the intent engine.
  void monde(MondeVoix monde);
  /// One more agent waits: a verdict is not about what was read before.
  void unAutreAttend();

 private:
  std::string demander(std::string_view phrase);
  std::string mener(const IntentionTarnavelle& intention);
  std::string trancher(bool accord);
  std::string lireEcran(const std::string& agent, bool depuisPrompt);
  std::string poster(const Json& corps) const;

  const std::shared_ptr<const Porte> porte_;
  const std::optional<AccesTexte> modeleTexte_;
  std::mutex verrou_;  ///< guards what follows
  MondeVoix monde_;
  std::string lu_;  ///< the agent whose screen was read last
};

/// The one of those that wait whom a verdict answers; null when it could be another.
const AgentVu* viseParLeVerdict(const std::vector<AgentVu>& attendent, std::string_view lu);

/// The keys that answer a dialog. Nothing when the choice under the cursor is not what "yes" would take.
std::optional<std::string> touchesDuVerdict(bool accord, std::string_view programme, std::string_view ecran);

}  // namespace tarnavelle::Voix
