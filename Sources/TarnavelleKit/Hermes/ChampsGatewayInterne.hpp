// How the gateway's payloads are looked into: lists of keys, the first one that holds something of use winning.
// Private to this folder.
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Hermes/EvenementGateway.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::interne {

using Cles = std::span<const std::string_view>;

constexpr std::array<std::string_view, 4> clesNom = {"name", "tool", "tool_name", "function"};
constexpr std::array<std::string_view, 7> clesChemin = {"file_path", "filePath", "notebook_path", "target_file",
                                                        "filename",  "file",     "path"};

inline bool parmi(std::string_view texte, std::initializer_list<std::string_view> liste) {
  return std::find(liste.begin(), liste.end(), texte) != liste.end();
}

inline const Json* membreDe(const Json& objet, std::string_view cle, Json::value_t genre) {
  const Json* membre = Champ::membre(objet, cle);
  return membre && membre->type() == genre ? membre : nullptr;
}

/// The first non-empty text under these keys, or null.
const std::string* premierTexte(const Json& objet, Cles cles);

/// The tool's name, or null.
const std::string* nomDOutil(const Json& objet);

inline EvenementGateway aucun() { return {EvenementGateway::rien{}}; }

/// A request for approval, and the answer to one. The object is whole: no key has been left out.
EvenementGateway lireDemande(const Json& objet);
EvenementGateway lireDecision(const Json& objet);

}  // namespace tarnavelle::interne
