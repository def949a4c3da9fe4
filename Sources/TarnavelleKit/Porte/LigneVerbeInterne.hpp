// What the rows of the table are written with, and where they stand. Private to this folder.
#pragma once

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Porte/LigneVerbe.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::interne {

using namespace Champ;
using Args = const Json&;
using C = CommandeControle;

inline ParamVoix requis(std::string nom, std::string description) {
  return {std::move(nom), ParamVoix::Genre::texte, std::move(description), true};
}
inline ParamVoix facultatif(std::string nom, std::string description) {
  return {std::move(nom), ParamVoix::Genre::texte, std::move(description), false};
}
inline ParamVoix drapeau(std::string nom, std::string description) {
  return {std::move(nom), ParamVoix::Genre::booleen, std::move(description), false};
}

/// The first of two texts or lists unless it is empty.
template <class T>
T premier(T valeur, std::type_identity_t<T> repli) {
  return valeur.empty() ? repli : valeur;
}

/// The rows, by kind of verb.
std::vector<LigneVerbe> verbesPlateau();
std::vector<LigneVerbe> verbesAgents();
std::vector<LigneVerbe> verbesTerminaux();
std::vector<LigneVerbe> verbesMessages();

}  // namespace tarnavelle::interne
