#include "Voix/ReconnexionRealtime.hpp"

#include <algorithm>

namespace tarnavelle {
namespace {

using ReconnexionRealtime::Motif;

/// Of one of `codesIrrecuperables`.
Motif motifDuCode(std::string_view code) {
  if (code == "insufficient_quota" || code == "billing_hard_limit_reached") return Motif::credit;
  if (code == "invalid_api_key" || code == "account_deactivated") return Motif::cle;
  return Motif::session;  // a code that has no words of its own yet
}

/// Of a declined connection; nothing when another may succeed. One service declines a bad key with 400, an
/// empty account with 403 or 429, and tells them apart in its message only. A page of HTML comes from something
/// in between, which may pass.
std::optional<Motif> motifDeConnexion(const RefusRealtime& refus) {
  const auto parle = [&](std::string_view de) { return refus.message.find(de) != std::string::npos; };
  const bool debit = refus.code.starts_with("rate_limit") || refus.genre.starts_with("rate_limit");
  if (debit || refus.message.starts_with('<')) return std::nullopt;
  switch (refus.http) {
    case 401: return Motif::cle;
    case 402: return Motif::credit;
    case 400:
    case 403:
    case 404: return parle(" credits") ? Motif::credit : parle("API key") ? Motif::cle : Motif::session;
    case 429: return parle(" credits") ? std::optional(Motif::credit) : std::nullopt;
    default: return std::nullopt;
  }
}

std::optional<std::string> dit(std::optional<Motif> motif) {
  return motif ? std::optional(std::string(ReconnexionRealtime::phrase(*motif))) : std::nullopt;
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

std::string_view ReconnexionRealtime::phrase(Motif motif) {
  switch (motif) {
    case Motif::credit: return "La voix s'arrête : le compte du fournisseur n'a plus de crédit.";
    case Motif::cle: return "La voix s'arrête : la clé du fournisseur est refusée.";
    case Motif::session: return "La voix s'arrête : le fournisseur refuse la session.";
  }
  return {};
}

std::optional<ReconnexionRealtime::Motif> ReconnexionRealtime::motif(
    std::optional<std::string_view> message, const std::optional<RefusRealtime>& refus) {
  if (const auto trouve = code(message)) return motifDuCode(*trouve);
  if (!refus) return std::nullopt;
  for (const std::string_view ecrit : {std::string_view(refus->code), std::string_view(refus->genre)})
    if (std::ranges::find(codesIrrecuperables, ecrit) != codesIrrecuperables.end()) return motifDuCode(ecrit);
  return motifDeConnexion(*refus);
}

std::optional<std::string> ReconnexionRealtime::explication(std::optional<std::string_view> message) {
  return dit(motif(message, {}));
}

std::optional<std::string> ReconnexionRealtime::explicationRefus(const RefusRealtime& refus) {
  return dit(motif({}, refus));
}

ReconnexionRealtime::Decision ReconnexionRealtime::decision(const Fermeture& fermeture) {
  if (fermeture.fermetureVoulue) return {Decision::rien{}};
  if (auto raison = dit(motif(fermeture.message, fermeture.refus)))
    return {Decision::abandonner{std::move(*raison)}};
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
