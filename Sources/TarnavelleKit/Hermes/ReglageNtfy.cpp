#include "Hermes/ReglageNtfy.hpp"

#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

/// The host of a URL that a connection can be made to.
std::optional<std::string> hoteLisible(std::string_view texte) {
  const auto url = boost::urls::parse_uri_reference(boost::urls::string_view(texte.data(), texte.size()));
  if (!url || url->encoded_host().empty()) return std::nullopt;
  // The parser's own number wraps around.
  if (const auto port = url->port(); !port.empty()) {
    const auto n = entierDecimal({port.data(), port.size()});
    if (!n || *n < 1 || *n > 65535) return std::nullopt;
  }
  // The parser takes a port that is no number as an empty port, then a path without its slash.
  const auto chemin = url->encoded_path();
  if (!chemin.empty() && !chemin.starts_with('/')) return std::nullopt;
  return std::string(url->encoded_host());
}

}  // namespace

std::string_view ReglageNtfy::serveurNet() const {
  auto net = Texte::rognerBlancs(serveur);
  while (net.ends_with('/')) net.remove_suffix(1);
  return net;
}

std::string_view ReglageNtfy::topicNet() const { return Texte::rognerBlancs(topic); }

std::optional<std::string> ReglageNtfy::refus() const {
  const auto canal = topicNet();
  if (canal.empty()) return "Aucun topic ntfy n'est réglé : l'oreille reste fermée.";
  if (const auto n = Texte::caracteres(canal); n < longueurMinimale)
    return "Le topic ntfy fait " + std::to_string(n) + " caractères ; il en faut au moins " +
           std::to_string(longueurMinimale) + " — c'est un mot de passe, pas un nom.";
  if (canal.find_first_not_of(admis) != canal.npos)
    return "Le topic ntfy n'admet que des lettres, des chiffres, « - » et « _ ».";
  const auto s = serveurNet();
  const auto hote = hoteLisible(s);
  if (!hote) return "Le serveur ntfy n'est pas une adresse lisible.";
  if (s.starts_with("https://") || (s.starts_with("http://") && estLoopback(*hote))) return std::nullopt;
  return "Le serveur ntfy doit être en https:// (http:// n'est toléré que sur la machine même).";
}

std::optional<std::string> ReglageNtfy::urlFlux() const {
  if (!pret()) return std::nullopt;
  return std::string(serveurNet()).append("/").append(topicNet()).append("/sse");
}

std::string ReglageNtfy::topicMasque() const {
  const auto canal = topicNet();
  const auto n = Texte::caracteres(canal);
  return (n < longueurMinimale ? "…" : Texte::tronquer(canal, 4)) + "(" + std::to_string(n) + ")";
}

bool ReglageNtfy::estLoopback(std::optional<std::string_view> hote) {
  if (!hote) return false;
  const std::string h = Texte::minuscules(*hote);
  return h == "localhost" || h == "::1" || h == "[::1]" || h.starts_with("127.");
}

}  // namespace tarnavelle
