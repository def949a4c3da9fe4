// How the gateway's payloads are looked into: lists of keys, the first one that holds something of use winning.
// Private to this folder.
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <string_view>

#include "Hermes/EvenementGateway.hpp"
#include "Socle/MembresLus.hpp"

namespace tarnavelle::interne {

constexpr auto clesNom = std::to_array<std::string_view>({"name", "tool", "tool_name"});
constexpr auto clesFonction = std::to_array<std::string_view>({"function"});
constexpr auto clesChemin = std::to_array<std::string_view>(
    {"file_path", "filePath", "notebook_path", "target_file", "filename", "file", "path"});

inline bool parmi(std::string_view texte, std::initializer_list<std::string_view> liste) {
  return std::find(liste.begin(), liste.end(), texte) != liste.end();
}

/// The tool's name, or null. Reads `clesNom` and `clesFonction`.
template <class Lu>
const std::string* nomDOutil(const Lu& objet) {
  const std::string* nom = objet.premierTexte(Lu::liste(clesNom));
  if (!nom) nom = objet["function"]["name"].chaine();
  return nom && !nom->empty() ? nom : nullptr;
}

inline EvenementGateway aucun() { return {EvenementGateway::rien{}}; }

/// A request for approval, and the answer to one. The object is whole: no key has been left out.
EvenementGateway lireDemande(const Json& objet);
EvenementGateway lireDecision(const Json& objet);

}  // namespace tarnavelle::interne
