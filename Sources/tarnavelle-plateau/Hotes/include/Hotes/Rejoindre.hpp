// What runs in the terminal of an agent that lives on another machine: it shows the agent's session there,
// through an ssh of its own, joins it again when the link is cut, and ends once the session has ended. What it
// has to say of the link stands on the screen, and in the log of the agent's hooks. `montrer` is the whole of
// `tarnavelle-plateau rejoindre FILE SESSION`.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Hotes/LienSSH.hpp"

namespace tarnavelle::Plateau::Rejoindre {

struct Fiche {
  ReglagesSSH ssh{};  ///< without its environment, which is the process's own
  std::string hote{};
  std::string titre{};  ///< how the agent's program is called
  std::filesystem::path journal{};
  int port = 0;  ///< over there, by which the agent calls the door here; 0 when it does not
};

/// As a file holds it.
std::optional<std::string> ecrire(const Fiche& fiche);
std::optional<Fiche> lire(std::string_view texte);

/// Returns with 0 once the session is over, or with what its start ended with.
int montrer(const std::filesystem::path& fichier, const std::string& session);

}  // namespace tarnavelle::Plateau::Rejoindre
