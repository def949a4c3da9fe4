// The names that agents and windows bear, within a sitting.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "BaseSQLite.hpp"

namespace tarnavelle::Plateau::Noms {

/// Gives the bearer that name and these labels, and takes from it those it had; refuses what another one bears.
void donner(Seance& seance, std::string_view porteur, std::string_view nom,
            const std::vector<std::string>& etiquettes);
void liberer(Seance& seance, std::string_view porteur);

struct Portes {
  std::string nom;
  std::vector<std::string> etiquettes;
};
std::map<std::string, Portes> tous(Seance& seance);

}  // namespace tarnavelle::Plateau::Noms
