// The names of a board: which ones agents receive, which are refused, how they stand in a sentence. How two of
// them compare is `Texte::replier`'s business, who bears one the registry's. Pure functions.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle::Plateau {

/// The agent programs that a board opens.
const std::vector<std::string>& lanceurs();

/// The call signs given when the operator chose none.
const std::vector<std::string>& rosterUsine();

/// The first name that `pris` does not hold: those of the list in order, then the same numbered from 2.
/// The list must not be empty.
std::string prochainNom(const std::vector<std::string>& liste,
                        const std::function<bool(const std::string&)>& pris);

/// Why a text cannot be a name, in French; nothing when it can. `indicatif` is the stricter rule of an
/// agent's name, which must not be mistaken for a program or a model.
std::optional<std::string> refusNom(std::string_view nom, bool indicatif);

/// The text between « », clipped for a message.
std::string cite(std::string_view texte);

/// The texts joined with ", ", or "aucun" when there is none.
std::string enumerer(const std::vector<std::string>& textes);

}  // namespace tarnavelle::Plateau
