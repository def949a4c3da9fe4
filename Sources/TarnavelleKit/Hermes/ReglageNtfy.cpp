#include "Hermes/ReglageNtfy.hpp"

#include "Socle/Texte.hpp"
#include "Socle/URL.hpp"

namespace tarnavelle {

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
  const auto url = URL::lire(s);
  if (!url || url->port == 0) return "Le serveur ntfy n'est pas une adresse lisible.";
  if (s.starts_with("https://") || (s.starts_with("http://") && estLoopback(url->hote))) return std::nullopt;
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
