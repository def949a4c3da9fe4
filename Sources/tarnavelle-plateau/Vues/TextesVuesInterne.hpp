// What a scene says in words: its status line, its list, the title of a view. Everything that comes from
// elsewhere is shown as it reads and does nothing: no tmux format, no style, no control. Pure functions.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Vues/Apercu.hpp"

namespace tarnavelle::Plateau::TextesVues {

/// The text as an option's value shows it in a status line, cut to that many characters.
std::string neutre(std::string_view texte, std::size_t caracteres);

/// Who needs what, the messages that wait, the scene's post-its, then the other agents by urgency: all of it
/// shortened where it does not fit, and what is left out counted.
std::string ligneEtat(const Apercu& apercu, const FicheScene& scene, std::size_t colonnes);
/// In place of it once the door is closed, and above the list, which says what was then.
std::string_view porteFermee();
std::string_view etatDAlors();

/// In place of what there is no room for: "… et 12 autres".
std::string autres(std::size_t n);

/// What stands above a view.
std::string titre(const Apercu::Element& element);

/// One line each, after a sign that says how it is drawn: "!" for who waits, "=" for a heading, "-" for what
/// may be left out, " " otherwise. `enVue`: whose view stands on the scene.
std::vector<std::string> liste(const Apercu& apercu, const FicheScene& scene,
                               const std::set<std::string>& enVue);

}  // namespace tarnavelle::Plateau::TextesVues
