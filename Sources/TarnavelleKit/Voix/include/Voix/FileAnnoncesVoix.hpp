// The cockpit's events that wait to be told to the model, until the conversation is free to take them.
// Their words are AnnonceVoix's, their delivery the session's owner's. A plain value: one thread at a time.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle {

struct FileAnnoncesVoix {
  static constexpr std::size_t maxEnAttente = 5;

  std::deque<std::string> attente;

  bool operator==(const FileAnnoncesVoix&) const = default;

  /// White space and newlines around the text are dropped; a text that is empty or the same as the last
  /// one waiting is ignored. Beyond `maxEnAttente`, the oldest goes.
  void enfiler(std::string_view texte);

  struct Conversation {
    bool connecte = false;
    bool reponseActive = false;     ///< a response is being produced
    bool appelEnCours = false;      ///< a tool call is in progress
    bool feuVertEnAttente = false;  ///< the user is asked to confirm
  };
  static bool peutLivrer(const Conversation& conversation);

  /// Takes the first announcement out when the conversation is free to take it.
  std::optional<std::string> prochaine(const Conversation& conversation);

  /// Puts an announcement whose delivery failed back at the front. Beyond `maxEnAttente`, the newest
  /// goes: the one put back keeps its turn.
  void remettre(std::string texte);

  void vider() { attente.clear(); }
};

}  // namespace tarnavelle
