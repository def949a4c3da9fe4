// What the client says of itself and of each command, as the catalogue describes it. Safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Catalogue.hpp"
#include "Sortie.hpp"

namespace tarnavelle::Aide {

/// How a command is called; null gives the client's own usage.
std::string usage(const OutilVoix* outil);

/// Every command in one short line, and the common options. Texts are folded to `colonnes`, when
/// given, and stand on one line each otherwise.
Page generale(std::optional<std::size_t> colonnes);

/// All there is to know of one command.
Page deCommande(const OutilVoix& outil, std::optional<std::size_t> colonnes);

/// How a command line is read and what is printed, a paragraph each.
const std::vector<std::string_view>& principes();

/// What each exit status means, in order.
const std::vector<std::pair<int, std::string_view>>& statuts();

/// The environment variables that are read, and what for.
const std::vector<std::pair<std::string_view, std::string_view>>& variables();

/// The other names of a command, and their title; both empty when it has none.
std::pair<std::string_view, std::string> alias(const OutilVoix& outil);

/// A parameter of that command, null for a common option, with what it takes: "--agent AGENT",
/// "--valider=false".
std::string formeOption(const OutilVoix* outil, const ParamVoix& parametre);

/// What is said of a parameter.
std::string ditDe(const ParamVoix& parametre);

}  // namespace tarnavelle::Aide
