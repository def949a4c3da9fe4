#include "Voix/ReconnexionRealtime.hpp"

#include <algorithm>

namespace tarnavelle {

std::chrono::seconds ReconnexionRealtime::delai(std::int64_t tentative) {
  return std::clamp(std::chrono::seconds(tentative), std::chrono::seconds(1), delaiMaxSecondes);
}

std::optional<std::string_view> ReconnexionRealtime::code(std::optional<std::string_view> message) {
  if (!message) return std::nullopt;
  const auto trouve = std::ranges::find_if(codesIrrecuperables, [&](std::string_view code) {
    return message->find(code) != std::string_view::npos;
  });
  return trouve == codesIrrecuperables.end() ? std::nullopt : std::optional(*trouve);
}

bool ReconnexionRealtime::estIrrecuperable(std::optional<std::string_view> message) {
  return code(message).has_value();
}

std::optional<std::string> ReconnexionRealtime::explication(std::optional<std::string_view> message) {
  const auto trouve = code(message);
  if (!trouve) return std::nullopt;
  if (trouve == "insufficient_quota" || trouve == "billing_hard_limit_reached")
    return "La voix s'arrête : le compte du fournisseur n'a plus de crédit.";
  if (trouve == "invalid_api_key" || trouve == "account_deactivated")
    return "La voix s'arrête : la clé du fournisseur est refusée.";
  return "La voix s'arrête : le fournisseur refuse la session.";  // a code that has no words of its own yet
}

ReconnexionRealtime::Decision ReconnexionRealtime::decision(const Fermeture& fermeture) {
  if (fermeture.fermetureVoulue) return {Decision::rien{}};
  if (auto raison = explication(fermeture.message)) return {Decision::abandonner{std::move(*raison)}};
  if (fermeture.superviseurEnCours) return {Decision::rien{}};
  return {Decision::reconnecter{.delai = delai(fermeture.tentative),
                                .tentative = std::max<std::int64_t>(fermeture.tentative, 1)}};
}

InactiviteConversation::Geste InactiviteConversation::geste(const Etat& etat) {
  if (etat.reponseActive || etat.appelEnCours) return Geste::rien;
  if (etat.silenceDepuis >= raccrocheApres) return Geste::raccrocher;
  if (etat.silenceDepuis >= videHistoriqueApres && !etat.historiqueVide) return Geste::viderHistorique;
  return Geste::rien;
}

bool FinDActiviteDurable::merite(const Travail& travail) {
  return travail.travaillaitAvant && !travail.travailleMaintenant && travail.travailDepuis >= minimumTravail;
}

}  // namespace tarnavelle
