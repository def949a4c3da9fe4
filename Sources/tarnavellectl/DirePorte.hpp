// What the operator is told of the door: where its address comes from, why there is none, why no answer came.
// An address is shown without what may be a secret in it. Nothing is called here. Safe from any thread.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "Porte/PorteControle.hpp"
#include "Reseau/ClientHTTP.hpp"

namespace tarnavelle::DirePorte {

/// The door's address without user and query.
std::string adresse(const PorteResolue& porte);

/// What TARNAVELLE_CONTROL_URL and the endpoint file have to do with the choice: clauses, no full stop.
std::string variable(const RecherchePorte& recherche, const Variables& environnement);
std::string fichier(const RecherchePorte& recherche, const Variables& environnement);

/// Why there is no door, a message a line.
std::vector<std::string> introuvable(const RecherchePorte& recherche, const Variables& environnement);

/// Where the address of the door that was called comes from: a message.
std::string origine(const RecherchePorte& recherche, const Variables& environnement);

/// Why no reply came after `attente`: a clause, no full stop.
std::string raison(const EchecHTTP& echec, std::chrono::seconds attente);

/// The same for a verb, a message a line: whether it may have been carried out, and which door was called.
std::vector<std::string> sansReponse(const EchecHTTP& echec, std::chrono::seconds attente,
                                     const RecherchePorte& recherche, const Variables& environnement);

}  // namespace tarnavelle::DirePorte
