#include "Voix/UsageRealtime.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using Compte = std::int64_t;
constexpr Compte compteMax = std::numeric_limits<Compte>::max();
constexpr double million = 1e6;  // prices are per million tokens

/// The sum, or the nearest number that 64 bits hold.
Compte somme(Compte a, Compte b) {
  if (b > 0 && a > compteMax - b) return compteMax;
  constexpr Compte compteMin = std::numeric_limits<Compte>::min();
  if (b < 0 && a < compteMin - b) return compteMin;
  return a + b;
}

Compte compte(const Json* details, std::string_view cle) {
  const Json* n = details ? Champ::membre(*details, cle) : nullptr;
  return n ? std::max<Compte>(entierTronque(*n).value_or(0), 0) : 0;
}

/// A count without the part of it that was cached.
Compte nonCache(const Json* details, const Json* caches, std::string_view cle) {
  return std::max<Compte>(compte(details, cle) - compte(caches, cle), 0);  // none of them negative
}

const Json* usageDeReponse(const Json& evenement) {
  const Json* reponse = Champ::membre(evenement, "response");
  return reponse ? Champ::membre(*reponse, "usage") : nullptr;
}

std::optional<TourRealtime> tour(const Json* usage) {
  if (!usage || !usage->is_object()) return std::nullopt;
  const Json* entree = Champ::membre(*usage, "input_token_details");
  const Json* caches = entree ? Champ::membre(*entree, "cached_tokens_details") : nullptr;
  const Json* sortie = Champ::membre(*usage, "output_token_details");
  return TourRealtime{.texteEntreeNonCache = nonCache(entree, caches, "text_tokens"),
                      .audioEntreeNonCache = nonCache(entree, caches, "audio_tokens"),
                      .entreeCachee = compte(entree, "cached_tokens"),
                      .texteSortie = compte(sortie, "text_tokens"),
                      .audioSortie = compte(sortie, "audio_tokens")};
}

/// With that many decimals, after a point in every locale.
std::string decimal(double valeur, int decimales) {
  char tampon[std::numeric_limits<double>::max_exponent10 + 16];
  const auto fin = std::to_chars(tampon, tampon + sizeof tampon, valeur, std::chars_format::fixed, decimales);
  return {tampon, fin.ptr};
}

double duree(double secondes) { return std::isfinite(secondes) && secondes > 0 ? secondes : 0; }

Compte secondesEntieres(double secondes) {
  constexpr double borne = 9e18;  // fits 64 bits
  return static_cast<Compte>(std::min(duree(secondes), borne));
}

}  // namespace

constexpr TarifRealtime TarifRealtime::defaut{4.0, 32.0, 0.4, 16.0, 64.0};

const std::map<std::string, TarifRealtime, std::less<>>& TarifRealtime::table() {
  static const std::map<std::string, TarifRealtime, std::less<>> tarifs{
      {"gpt-realtime-2.1-mini", {0.6, 10.0, 0.3, 2.4, 20.0}},
      {"gpt-realtime-2.1", {4.0, 32.0, 0.4, 16.0, 64.0}},
      {"gpt-realtime", {4.0, 32.0, 0.4, 16.0, 64.0}}};
  return tarifs;
}

const TarifRealtime& TarifRealtime::pour(std::string_view model) {
  const std::string nom = Texte::minuscules(Texte::rognerBlancs(model));
  // The exact name, if it is there, is the longest of all that begin it.
  const auto* trouve = static_cast<const std::pair<const std::string, TarifRealtime>*>(nullptr);
  for (const auto& ligne : table())
    if (nom.starts_with(ligne.first) && (!trouve || ligne.first.size() > trouve->first.size())) trouve = &ligne;
  return trouve ? trouve->second : defaut;
}

TourRealtime& TourRealtime::operator+=(const TourRealtime& autre) {
  for (const auto champ : {&TourRealtime::texteEntreeNonCache, &TourRealtime::audioEntreeNonCache,
                           &TourRealtime::entreeCachee, &TourRealtime::texteSortie, &TourRealtime::audioSortie})
    this->*champ = somme(this->*champ, autre.*champ);
  return *this;
}

std::optional<TourRealtime> LectureUsageRealtime::lire(std::string_view texte) {
  const auto document = LectureJSON::objet(texte);
  return document ? lireObjet(*document) : std::nullopt;
}

std::optional<TourRealtime> LectureUsageRealtime::lireObjet(const Json& objet) {
  return tour(usageDeReponse(objet));
}

std::optional<TourRealtime> LectureUsageRealtime::lireOuQuIlSoit(const Json& objet) {
  const Json *usage = usageDeReponse(objet), *enTete = Champ::membre(objet, "usage");
  const auto rempli = [](const Json* u) { return u && u->is_object() && !u->empty(); };
  return tour(!rempli(usage) && rempli(enTete) ? enTete : usage);
}

void UsageRealtime::ajouter(const TourRealtime& tour) {
  tours = somme(tours, 1);
  total += tour;
}

double UsageRealtime::cout(const TarifRealtime& tarif) const {
  const auto prix = [](Compte jetons, double parMillion) {
    return static_cast<double>(jetons) / million * parMillion;
  };
  return prix(total.texteEntreeNonCache, tarif.texteEntree) +
         prix(total.audioEntreeNonCache, tarif.audioEntree) + prix(total.entreeCachee, tarif.entreeCachee) +
         prix(total.texteSortie, tarif.texteSortie) + prix(total.audioSortie, tarif.audioSortie);
}

std::string UsageRealtime::ligne(double dureeSecondes, const TarifRealtime& tarif) const {
  const Compte secondes = secondesEntieres(dureeSecondes);
  std::string ligne = "Conversation — ";
  if (secondes >= 60) ligne += std::to_string(secondes / 60) + " min ";
  return ligne + std::to_string(secondes % 60) + " s · " + std::to_string(tours) + " tours · ~" +
         decimal(cout(tarif), 4) + " $";
}

std::string CumulVoixDuJour::jourDe(std::chrono::system_clock::time_point date, const Calendrier& calendrier) {
  return calendrier.jour(date);
}

CumulVoixDuJour CumulVoixDuJour::ajoutant(double montant, std::chrono::system_clock::time_point le,
                                          const Calendrier& calendrier) const {
  CumulVoixDuJour cumul{.jour = jourDe(le, calendrier)};
  if (cumul.jour == jour) cumul = *this;
  if (std::isfinite(cumul.usd + montant)) cumul.usd += montant;
  cumul.sessions = somme(cumul.sessions, 1);
  return cumul;
}

std::optional<std::string> CumulVoixDuJour::ligne(std::chrono::system_clock::time_point le,
                                                  const Calendrier& calendrier) const {
  if (sessions < 1 || jour != jourDe(le, calendrier)) return std::nullopt;
  return "Aujourd'hui : " + std::to_string(sessions) + " conversation" + (sessions == 1 ? "" : "s") + " · ~" +
         decimal(usd, 2) + " $";
}

std::optional<CumulVoixDuJour> CumulVoixDuJour::lire(std::string_view texte) {
  const auto document = LectureJSON::objet(texte);
  if (!document) return std::nullopt;
  const std::string* jour = Champ::chaine(*document, "jour");
  const Json* depense = Champ::membre(*document, "usd");
  const Json* sessions = Champ::membre(*document, "sessions");
  const auto nombre = sessions ? entierTronque(*sessions) : std::nullopt;
  const auto usd = depense ? reel(*depense) : std::nullopt;
  if (!jour || !usd || !nombre) return std::nullopt;
  return CumulVoixDuJour{.jour = *jour, .usd = *usd, .sessions = *nombre};
}

Json CumulVoixDuJour::json() const { return {{"jour", jour}, {"usd", usd}, {"sessions", sessions}}; }

double RealtimeCost::estimate(double inSeconds, double outSeconds) {
  struct Sens {
    double jetonsParSeconde, dollarsParMillion;
  };
  constexpr Sens entree{10, 10}, sortie{20, 20};
  const auto prix = [](double secondes, const Sens& sens) {
    return duree(secondes) * sens.jetonsParSeconde / million * sens.dollarsParMillion;
  };
  return prix(inSeconds, entree) + prix(outSeconds, sortie);
}

std::string RealtimeCost::line(double durationSeconds, double inSeconds, double outSeconds) {
  return "Realtime — " + decimal(duree(durationSeconds), 1) + " s · ~" +
         decimal(estimate(inSeconds, outSeconds), 4) + " $";
}

}  // namespace tarnavelle
