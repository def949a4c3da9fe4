// The tool calls of a voice session, carried out strictly one at a time in the order they came. Their
// owner executes them and answers each id exactly once. A plain value: one thread at a time.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle {

struct FileAppelsRealtime {
  struct Appel {
    std::string name;
    std::string argsJSON;  ///< a JSON object as text
    std::string callID;
    bool operator==(const Appel&) const = default;
  };

  /// The output given for a call that is dropped, so that the model does not wait for its result.
  static constexpr std::string_view sortieAbandon =
      "interrompu — n'attends pas ce résultat, réponds à ce qui vient d'être dit.";

  std::optional<Appel> courant = {};  ///< being executed
  std::deque<Appel> attente = {};
  std::int64_t executes = 0;  ///< calls finished

  bool operator==(const FileAppelsRealtime&) const = default;

  /// The call when it is to be executed now; nothing when it has to wait.
  std::optional<Appel> enfiler(Appel appel);

  /// Ends the current call and gives the one to execute next. Without a current call, changes nothing.
  std::optional<Appel> terminer();

  /// Forgets the current call and those that wait.
  void vider();

  bool vide() const { return !courant && attente.empty(); }

  /// The calls still owed an answer, in order.
  std::vector<std::string> callIDsEnVol() const;
};

}  // namespace tarnavelle
