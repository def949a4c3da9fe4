// The notes by which the cockpit tells the voice what has just happened, and the paragraph of the
// instructions that explains them to the model. When a note is delivered is FileAnnoncesVoix's business.
// Pure functions, safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace tarnavelle::AnnonceVoix {

/// Opens every announcement.
inline constexpr std::string_view balise = "[tarnavelle]";

inline constexpr std::string_view contratAnnonces =
    "QUAND TU REÇOIS UNE NOTE « (Événement : …) », ce n'est pas l'opérateur qui parle : c'est le cockpit. "
    "Dis-lui ce qui vient de se passer en UNE phrase courte, puis propose le geste suivant évident. Si "
    "l'agent est à l'écran, propose de résumer son travail ou de l'aider à diriger la suite. S'il est sur "
    "une autre scène, propose d'y basculer ou de te le faire résumer. N'AGIS QUE S'IL EST D'ACCORD. Jamais "
    "de log brut, jamais deux fois la même formulation.";

struct Note {
  std::string_view texte;
  std::string_view consigne;  ///< what the voice must do with it; may be empty
};
/// Both texts are trimmed. Empty when the note's text is.
std::string annonce(const Note& note);

struct Evenement {
  std::string_view titre;
  std::string_view corps;  ///< either may be empty
};
/// Announces an event, in the form that the instructions describe. Empty when both texts are.
std::string evenement(const Evenement& evenement);

struct Fin {
  std::string_view agent;
  std::string_view resume;  ///< what came out of it; may be empty
};
/// Announces that an agent has finished.
std::string aFini(const Fin& fin);

}  // namespace tarnavelle::AnnonceVoix
