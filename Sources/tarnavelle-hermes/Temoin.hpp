// What a conversation tells the board of itself, in the hooks that agents have: an instruction was submitted, a
// tool runs, leave is asked for, the turn is over. Nothing where no log is named. One thread at a time.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Socle/Environnement.hpp"

namespace tarnavelle {

class Temoin {
 public:
  explicit Temoin(const Variables& environnement);

  void demarre() { noter("SessionStart", "source", "startup"); }
  /// A turn begins, with an id of its own.
  void consigne(std::string_view texte);
  void outil(std::string_view nom) { noter("PreToolUse", "tool_name", nom); }
  void accord(std::string_view outil) { noter("PermissionRequest", "tool_name", outil); }
  void fini(std::string_view reponse) { noter("Stop", "last_assistant_message", reponse); }
  void echec(std::string_view raison) { noter("StopFailure", "message", raison); }
  void interrompu() { noter("Interrupt", "message", ""); }
  void sorti() { noter("SessionEnd", "reason", "exit"); }

 private:
  void noter(std::string_view evenement, std::string_view cle, std::string_view texte);

  const std::filesystem::path journal_;
  std::string tour_;
};

}  // namespace tarnavelle
