#include "Agents/FichierDistant.hpp"

#include <algorithm>

namespace tarnavelle::FichierDistant {

std::string impression(std::string_view chemin, std::int64_t curseur) {
  const auto premier = static_cast<std::uint64_t>(std::max<std::int64_t>(curseur, 0)) + 1;
  const std::string fichier = '"' + std::string(chemin) + '"';
  return "{ [ -f " + fichier + " ] && tail -c +" + std::to_string(premier) + ' ' + fichier + " | head -c " +
         std::to_string(lectureMax) + "; } || :";
}

std::int64_t curseurSuivant(std::int64_t curseur, std::size_t octets, std::size_t consommes) {
  const bool sansFin = consommes == 0 && octets >= static_cast<std::size_t>(lectureMax);
  return curseur + static_cast<std::int64_t>(sansFin ? octets : consommes);
}

}  // namespace tarnavelle::FichierDistant
