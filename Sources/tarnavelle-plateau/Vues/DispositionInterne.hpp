// Where the panes of a scene stand in its window: the list, and views that a person can read. Numbers of
// columns and lines, as tmux counts them. Pure functions. The layout's text is tmux's own:
// https://github.com/tmux/tmux/blob/master/layout-custom.c
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Terminaux/Terminaux.hpp"

namespace tarnavelle::Plateau::Disposition {

/// The smallest screen an agent is given, and what it has when nobody looks.
inline constexpr Taille plancher{80, 24};
inline constexpr Taille ordinaire{};
inline constexpr std::size_t vuesMax = 9;

enum class Plan { grille, colonnes, scene, apercuAgents, automatique };

/// By its name in the verbs' table.
std::optional<Plan> plan(std::string_view nom);
std::string_view nom(Plan plan);
/// Whether the first view takes a larger place.
bool aVedette(Plan plan);

/// How many views such a window holds at most, without any smaller than can be read.
std::size_t capacite(Taille fenetre, Plan plan);

/// The layout of the list and of that many views, in this order.
std::string texte(Taille fenetre, Plan plan, std::size_t vues);

/// A layout with the checksum that tmux asks for.
std::string signe(std::string_view disposition);

}  // namespace tarnavelle::Plateau::Disposition
