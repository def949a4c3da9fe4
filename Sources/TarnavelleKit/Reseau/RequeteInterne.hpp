// An HTTP/1.1 request as bytes. Private to this folder.
#pragma once

#include <string>
#include <vector>

#include "Reseau/ConnexionInterne.hpp"
#include "Socle/RequeteHTTP.hpp"

namespace tarnavelle::interne {

/// Whether no header value holds a control character.
bool envoyable(const RequeteHTTP& requete);

/// With the Host and Content-Length that the request leaves to its client, and the client's own headers.
std::string octets(const RequeteHTTP& requete, const Adresse& adresse,
                   const std::vector<EnteteHTTP>& propres = {});

}  // namespace tarnavelle::interne
