// Writing JSON, in the two styles the system uses. Keys are sorted by their bytes at every depth,
// text is raw UTF-8, "/" stands plain, control characters are escaped. Pure functions, safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Socle/JSON.hpp"

namespace tarnavelle::EcritureJSON {

/// One line without spaces. Nothing when a text or a key is not well-formed UTF-8, or a number not finite.
std::optional<std::string> compacte(const Json& valeur);

/// Appends the same line to `texte`. False, with `texte` as it was, when there is none.
bool ajouter(std::string& texte, const Json& valeur);

/// Appends a text as a JSON string. False, with `sortie` as it was, when it is not well-formed UTF-8.
bool ajouterTexte(std::string& sortie, std::string_view texte);

/// Two-space indentation and `"key" : value`; empty containers stay on one line. Nothing where `compacte`
/// gives nothing.
std::optional<std::string> lisible(const Json& valeur);

}  // namespace tarnavelle::EcritureJSON
