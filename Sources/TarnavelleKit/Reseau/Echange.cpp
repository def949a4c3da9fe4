#include "EchangeInterne.hpp"

#include <algorithm>
#include <boost/beast/http/error.hpp>

#include "Socle/Texte.hpp"

namespace tarnavelle::interne {

bool envoyable(const RequeteHTTP& requete) {
  return std::ranges::none_of(requete.entetes,
                              [](const EnteteHTTP& entete) { return Texte::porteControle(entete.valeur); });
}

std::string octets(const RequeteHTTP& requete, const Adresse& adresse, const std::vector<EnteteHTTP>& propres) {
  std::string t;
  t.reserve(256 + requete.corps.size());
  t.append(requete.methode).append(" ").append(adresse.chemin).append(" HTTP/1.1\r\nHost: ");
  t.append(adresse.entete);
  for (const auto* entetes : {&requete.entetes, &propres})
    for (const EnteteHTTP& e : *entetes) t.append("\r\n").append(e.nom).append(": ").append(e.valeur);
  t.append("\r\nContent-Length: ").append(std::to_string(requete.corps.size()));
  t.append("\r\n\r\n").append(requete.corps);
  return t;
}

bool malForme(const Erreur& erreur) {
  namespace http = boost::beast::http;
  return erreur.category() == make_error_code(http::error::bad_chunk).category() &&
         erreur != http::error::end_of_stream && erreur != http::error::partial_message;
}

}  // namespace tarnavelle::interne
