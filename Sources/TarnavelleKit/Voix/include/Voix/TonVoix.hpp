// The register in which the voice speaks to the operator. By default the sober tone; the catalogue of
// tones is the cockpit's. A plain value: one thread at a time.
#pragma once

#include <optional>
#include <string>

namespace tarnavelle {

struct TonVoix {
  std::string id = "sobre";
  std::string titre = "Sobre";
  std::string detail = "La voix du cockpit, telle qu'elle est.";
  std::string bloc = {};                         ///< the register, told to the model; empty: none of its own
  std::optional<std::string> voixSuggeree = {};  ///< a provider's voice
  std::optional<std::string> effort = {};        ///< a level of reasoning
  bool adulte = false;

  bool operator==(const TonVoix&) const = default;
};

}  // namespace tarnavelle
