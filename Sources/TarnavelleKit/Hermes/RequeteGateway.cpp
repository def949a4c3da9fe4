#include "Hermes/RequeteGateway.hpp"

#include <nlohmann/json.hpp>

#include "Socle/EcritureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::RequeteGateway {

Json corps(const Corps& corps) {
  return {{"model", Texte::reparer(corps.modele)},
          {"messages", Json::array({{{"role", "user"}, {"content", Texte::reparer(corps.message)}}})},
          {"stream", corps.stream}};
}

std::vector<EnteteHTTP> entetes(const std::optional<std::string>& cle,
                                const std::optional<std::string>& sessionId) {
  std::vector<EnteteHTTP> entetes{{"Content-Type", "application/json"}, {"Accept", "text/event-stream"}};
  const auto envoyable = [](const auto& valeur) {
    return valeur && !valeur->empty() && !Texte::porteControle(*valeur);
  };
  if (envoyable(cle)) {
    entetes.push_back({std::string(enteteCle), *cle});
    entetes.push_back({"Authorization", "Bearer " + *cle});
  }
  if (envoyable(sessionId)) entetes.push_back({std::string(enteteSession), *sessionId});
  return entetes;
}

std::string modele(const Modele& modele) {
  for (const auto* choix : {&modele.surcharge, &modele.annonce})
    if (*choix)
      if (const auto nom = Texte::rogner(**choix); !nom.empty()) return std::string(nom);
  return std::string(modeleParDefaut);
}

Json corpsVerdict(std::string_view approvalId, DecisionApprobation decision) {
  const bool approuve = decision == DecisionApprobation::approuver;
  return {{"type", typeVerdict},
          {"approval_id", approvalId},
          {"decision", approuve ? "approve" : "reject"},
          {"approved", approuve}};
}

RequeteHTTP chat(const Tour& tour) {
  const std::string_view separateur = tour.base.ends_with('/') ? "" : "/";
  return {.methode = "POST",
          .url = std::string(tour.base).append(separateur).append(routeChat),
          .entetes = entetes(tour.cle, tour.sessionId),
          // Repaired texts can always be written.
          .corps = EcritureJSON::compacte(corps({.message = tour.message, .modele = tour.modele})).value(),
          .delai = silenceTolere};
}

}  // namespace tarnavelle::RequeteGateway
