#include "Socle/URL.hpp"

#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {
namespace {

std::string_view vue(boost::urls::string_view texte) { return {texte.data(), texte.size()}; }

/// The parser's own number wraps around.
std::uint16_t numero(std::string_view port) {
  const auto n = entierDecimal(port);
  return n && *n >= 1 && *n <= 65535 ? static_cast<std::uint16_t>(*n) : 0;
}

}  // namespace

std::optional<URL> URL::lire(std::string_view texte) {
  const auto lue = boost::urls::parse_uri_reference({texte.data(), texte.size()});
  if (!lue || lue->encoded_host().empty()) return std::nullopt;
  // The parser takes a port that is no number as an empty port, then a path without its slash.
  const auto chemin = lue->encoded_path();
  if (!chemin.empty() && !chemin.starts_with('/')) return std::nullopt;
  const auto port = vue(lue->port());
  return URL{.hote = lue->host_address(),
             .port = port.empty() ? std::nullopt : std::optional(numero(port)),
             .schema = vue(lue->scheme()),
             .hoteEtPort = vue(lue->encoded_host_and_port()),
             .cible = vue(lue->encoded_target())};
}

}  // namespace tarnavelle
