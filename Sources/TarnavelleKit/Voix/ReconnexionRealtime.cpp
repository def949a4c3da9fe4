#include "Voix/ReconnexionRealtime.hpp"

#include <algorithm>

namespace tarnavelle {
namespace {

constexpr std::string_view sansCredit = "La voix s'arrête : le compte du fournisseur n'a plus de crédit.";
constexpr std::string_view sansCle = "La voix s'arrête : la clé du fournisseur est refusée.";
constexpr std::string_view sansSession = "La voix s'arrête : le fournisseur refuse la session.";

/// The sentence for one of `codesIrrecuperables`.
std::string_view phrase(std::string_view code) {
  if (code == "insufficient_quota" || code == "billing_hard_limit_reached") return sansCredit;
  if (code == "invalid_api_key" || code == "account_deactivated") return sansCle;
  return sansSession;  // a code that has no words of its own yet
}

/// The sentence for a declined connection; empty when another may succeed. One service declines a bad key
/// with 400, an empty account with 403 or 429, and tells them apart in its message only. A page of HTML comes
/// from something in between, which may pass.
std::string_view phraseDeConnexion(const RefusRealtime& refus) {
  const auto parle = [&](std::string_view de) { return refus.message.find(de) != std::string::npos; };
  const bool debit = refus.code.starts_with("rate_limit") || refus.genre.starts_with("rate_limit");
  if (debit || refus.message.starts_with('<')) return {};
  switch (refus.http) {
    case 401: return sansCle;
    case 402: return sansCredit;
    case 400:
    case 403:
    case 404: return parle(" credits") ? sansCredit : parle("API key") ? sansCle : sansSession;
    case 429: return parle(" credits") ? sansCredit : std::string_view();
    default: return {};
  }
}

}  // namespace

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
  return trouve ? std::optional(std::string(phrase(*trouve))) : std::nullopt;
}

std::optional<std::string> ReconnexionRealtime::explicationRefus(const RefusRealtime& refus) {
  for (const std::string_view dit : {std::string_view(refus.code), std::string_view(refus.genre)})
    if (std::ranges::find(codesIrrecuperables, dit) != codesIrrecuperables.end())
      return std::string(phrase(dit));
  const auto trouvee = phraseDeConnexion(refus);
  return trouvee.empty() ? std::nullopt : std::optional(std::string(trouvee));
}

ReconnexionRealtime::Decision ReconnexionRealtime::decision(const Fermeture& fermeture) {
  if (fermeture.fermetureVoulue) return {Decision::rien{}};
  auto raison = explication(fermeture.message);
  if (!raison && fermeture.refus) raison = explicationRefus(*fermeture.refus);
  if (raison) return {Decision::abandonner{std::move(*raison)}};
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
