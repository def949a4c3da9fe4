// The hooks that write the flight log of a claude agent, and the settings file that installs them.
// Safe from any thread.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Socle/JSON.hpp"

namespace tarnavelle::CarnetDeVol {

/// The hooks installed.
inline constexpr std::array<std::string_view, 6> evenements = {
    "SessionStart", "UserPromptSubmit", "PreToolUse", "Notification", "Stop", "SessionEnd"};

/// claude's hooks settings file.
struct Reglages {
  struct Commande {
    std::string type;
    std::string command;
    std::optional<std::int64_t> timeout;  ///< seconds
    bool operator==(const Commande&) const = default;
  };
  struct Entree {
    std::optional<std::string> matcher;
    std::vector<Commande> hooks;
    bool operator==(const Entree&) const = default;
  };

  std::map<std::string, std::vector<Entree>> hooks;  ///< by event

  bool operator==(const Reglages&) const = default;

  /// Nothing when a member is mistyped, or missing where it is not optional; others are ignored.
  static std::optional<Reglages> lire(std::string_view texte);
  Json json() const;
};

/// The hook: appends its standard input to the log as one line. The shell that runs it expands "$HOME"
/// and any other "$" of the path; a single quote in the path would end the command's own quotes, so the
/// path must hold none, as those of `journalDistant` never do.
std::string commandeHook(std::string_view journal);

Reglages reglages(std::string_view journal);

/// Their text; nothing when the path is not well-formed UTF-8.
std::optional<std::string> json(std::string_view journal);

}  // namespace tarnavelle::CarnetDeVol
