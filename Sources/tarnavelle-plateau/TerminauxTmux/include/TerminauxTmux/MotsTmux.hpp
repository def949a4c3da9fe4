// Words of tmux's command language, as a control-mode client writes them: data that stays data, never a format,
// a command or the name of a key. Pure functions. https://man.openbsd.org/tmux#PARSING_SYNTAX
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle::Plateau::MotsTmux {

/// One argument, whatever its bytes but NUL, which ends it.
std::string citer(std::string_view octets);

/// The format that expands to this text.
std::string formatDe(std::string_view texte);

/// A text as one side of a comparison within a format.
std::string comparable(std::string_view texte);

/// The format that says whether a line of the target's screen holds this text: "0" if none does. To be put into
/// another format as it is.
std::string chercher(std::string_view texte);

/// Whether it is a pane's number: "%12".
bool idValide(std::string_view id);

/// Whether a session may bear that name: it then targets that session and no other.
bool nomValide(std::string_view nom);

/// The send-keys command that presses one key of `Touche`, of that pane; nothing when there is no such key.
std::optional<std::string> frapper(std::string_view id, std::string_view touche);

}  // namespace tarnavelle::Plateau::MotsTmux
