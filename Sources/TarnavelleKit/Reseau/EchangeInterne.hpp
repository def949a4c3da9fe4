// One HTTP/1.1 exchange as the clients of this folder have it in common: the request as bytes, and how far an
// answer is trusted. Functions from any thread; a buffer and a parser are one exchange's. Private to this
// folder.
#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/optional.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "ConnexionInterne.hpp"
#include "Liaison/RequeteHTTP.hpp"

namespace tarnavelle::interne {

constexpr std::size_t lectureMax = 64 * 1024;    ///< bytes asked of the socket at a time
constexpr std::uint32_t entetesMax = 64 * 1024;  ///< bytes of an answer's headers

/// Whether no header value holds a control character.
bool envoyable(const RequeteHTTP& requete);

/// With the Host and Content-Length that the request leaves to its client, and the client's own headers.
std::string octets(const RequeteHTTP& requete, const Adresse& adresse,
                   const std::vector<EnteteHTTP>& propres = {});

/// What comes is no HTTP, or beyond the limits, as opposed to nothing coming any more.
bool malForme(const Erreur& erreur);

/// What has been read and not parsed yet. Bounded: chunk sizes, extensions and trailers count neither as
/// headers nor as body.
class TamponReponse : public boost::beast::flat_buffer {
 public:
  TamponReponse() : boost::beast::flat_buffer(entetesMax + lectureMax) { reserve(lectureMax); }
};

/// Readies a new parser for the answer that comes next; no `corpsMax`, no bound.
template <class Analyseur>
void preparer(Analyseur& analyseur, boost::optional<std::uint64_t> corpsMax) {
  analyseur.eager(true);
  analyseur.body_limit(corpsMax);
  analyseur.header_limit(entetesMax);
}

}  // namespace tarnavelle::interne
