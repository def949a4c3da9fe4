#include "Socle/URL.hpp"

#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

/// The parser has several types for a piece of text, and newer versions other names for them.
std::string_view vue(const auto& texte) { return {texte.data(), texte.size()}; }

/// Where the host of an absolute or network-path reference begins.
std::size_t debutDHote(std::string_view texte) {
  const auto barres = texte.find("//");
  if (barres == texte.npos) return texte.size();
  const auto autorite = texte.substr(0, texte.find_first_of("/?#", barres + 2));
  const auto arobase = autorite.rfind('@');
  return arobase == autorite.npos || arobase < barres ? barres + 2 : arobase + 1;
}

/// The parser's own number wraps around.
std::uint16_t numero(std::string_view port) {
  const auto n = entierDecimal(port);
  return n && *n >= 1 && *n <= 65535 ? static_cast<std::uint16_t>(*n) : 0;
}

/// The parts of `texte`, found in a text of the same shape that the parser reads.
std::optional<URL> lireComme(std::string_view lisible, std::string_view texte) {
  const auto lue = boost::urls::parse_uri_reference({lisible.data(), lisible.size()});
  if (!lue || lue->encoded_host().empty()) return std::nullopt;
  // The parser takes a port that is no number as an empty port, then a path without its slash.
  const auto chemin = lue->encoded_path();
  if (!chemin.empty() && !chemin.starts_with('/')) return std::nullopt;
  const auto port = vue(lue->port());
  const auto partie = [&](auto p) {
    return p.empty() ? std::string_view()
                     : texte.substr(static_cast<std::size_t>(p.data() - lisible.data()), p.size());
  };
  return URL{.hote = lue->host_address(),
             .port = port.empty() ? std::nullopt : std::optional(numero(port)),
             .schema = partie(lue->scheme()),
             .hoteEtPort = partie(lue->encoded_host_and_port()),
             .cible = partie(lue->encoded_target())};
}

}  // namespace

std::optional<URL> URL::lire(std::string_view texte) {
  if (auto url = lireComme(texte, texte)) return url;
  // Of a name that begins like an IPv4 address the parser takes the address and stumbles over the rest, where
  // an address is the whole host or none of it (RFC 3986, section 3.2.2). A letter instead of its first digit
  // leads it to the name.
  const auto hote = debutDHote(texte);
  if (hote >= texte.size() || texte[hote] < '0' || texte[hote] > '9') return std::nullopt;
  std::string lisible(texte);
  lisible[hote] = 'x';
  auto url = lireComme(lisible, texte);
  if (url) url->hote.front() = texte[hote];
  return url;
}

bool URL::surCetteMachine() const {
  const std::string nom = Texte::minuscules(hote);
  // A name may begin like an address, and lead anywhere.
  return nom == "localhost" || nom == "::1" ||
         (nom.starts_with("127.") && nom.find_first_not_of("0123456789.") == nom.npos);
}

}  // namespace tarnavelle
