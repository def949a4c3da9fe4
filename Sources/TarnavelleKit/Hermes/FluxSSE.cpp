#include "Hermes/FluxSSE.hpp"

#include "Socle/Texte.hpp"

namespace tarnavelle::FluxSSE {

Ligne lire(std::string_view ligne) {
  constexpr std::string_view champ = "data:";
  if (!ligne.starts_with(champ)) return {Ligne::ignorer{}};
  const auto charge = Texte::rognerBlancs(ligne.substr(champ.size()));
  if (charge.empty()) return {Ligne::ignorer{}};
  if (charge == "[DONE]") return {Ligne::fin{}};
  return {Ligne::charge{charge}};
}

}  // namespace tarnavelle::FluxSSE
