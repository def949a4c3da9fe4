#include "Voix/RealtimeProvider.hpp"

#include <algorithm>
#include <boost/url/encode.hpp>
#include <boost/url/parse.hpp>
#include <boost/url/rfc/unreserved_chars.hpp>

#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

constexpr const char* endpointOpenAI = "wss://api.openai.com/v1/realtime";
constexpr const char* endpointXAI = "wss://api.x.ai/v1/realtime";

}  // namespace

std::string_view valeurBrute(DialecteRealtime dialecte) {
  switch (dialecte) {
    case DialecteRealtime::openai: return "openai";
    case DialecteRealtime::xai: return "xai";
  }
  return {};
}

std::optional<DialecteRealtime> dialecteDepuis(std::string_view brute) {
  for (const RealtimeProvider& p : RealtimeProvider::tous())
    if (brute == valeurBrute(p.dialecte)) return p.dialecte;
  return std::nullopt;
}

const RealtimeProvider& RealtimeProvider::openai() { return *parId("openai"); }
const RealtimeProvider& RealtimeProvider::openai21() { return *parId("openai-2.1"); }
const RealtimeProvider& RealtimeProvider::grok() { return *parId("grok"); }

const std::vector<RealtimeProvider>& RealtimeProvider::tous() {
  static const std::vector<RealtimeProvider> liste = {
      {.id = "openai",
       .titre = "OpenAI Realtime 2.1 mini",
       .editeur = "OpenAI",
       .endpoint = endpointOpenAI,
       .modeleParDefaut = "gpt-realtime-2.1-mini",
       .voixParDefaut = "marin",
       .cleEnv = "OPENAI_API_KEY",
       .dialecte = DialecteRealtime::openai},
      {.id = "openai-2.1",
       .titre = "OpenAI Realtime 2.1",
       .editeur = "OpenAI",
       .endpoint = endpointOpenAI,
       .modeleParDefaut = "gpt-realtime-2.1",
       .voixParDefaut = "marin",
       .cleEnv = "OPENAI_API_KEY",
       .dialecte = DialecteRealtime::openai},
      {.id = "grok",
       .titre = "Grok Voice",
       .editeur = "xAI",
       .endpoint = endpointXAI,
       .modeleParDefaut = "grok-voice-think-fast-2.0",
       .voixParDefaut = "eve",
       .cleEnv = "XAI_API_KEY",
       .dialecte = DialecteRealtime::xai},
  };
  return liste;
}

const RealtimeProvider* RealtimeProvider::parId(const std::optional<std::string>& id) {
  const auto trouve = std::ranges::find(tous(), id, &RealtimeProvider::id);
  return trouve == tous().end() ? nullptr : &*trouve;
}

const RealtimeProvider* RealtimeProvider::actif(const Cles& clesPresentes,
                                                const std::optional<std::string>& choisi) {
  const auto disponible = [&](const RealtimeProvider& p) { return clesPresentes.contains(p.cleEnv); };
  if (const auto* p = parId(choisi); p && disponible(*p)) return p;
  const auto premier = std::ranges::find_if(tous(), disponible);
  return premier == tous().end() ? nullptr : &*premier;
}

std::vector<RealtimeProvider::Offre> RealtimeProvider::offre(const Cles& clesPresentes) {
  std::vector<Offre> offres;
  for (const RealtimeProvider& p : tous()) offres.push_back({p, clesPresentes.contains(p.cleEnv)});
  return offres;
}

std::vector<std::string> RealtimeProvider::clesDistinctes() {
  std::vector<std::string> cles;
  for (const RealtimeProvider& p : tous())
    if (std::ranges::find(cles, p.cleEnv) == cles.end()) cles.push_back(p.cleEnv);
  return cles;
}

std::optional<std::string> RealtimeProvider::url(std::string_view model) const {
  if (!Texte::utf8Valide(model)) return std::nullopt;
  auto adresse =
      endpoint + "?model=" + boost::urls::encode({model.data(), model.size()}, boost::urls::unreserved_chars);
  if (!boost::urls::parse_uri(adresse)) return std::nullopt;
  return adresse;
}

}  // namespace tarnavelle
