// What the rows of the table are written with. Private to this folder.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>

#include "Porte/OutilVoix.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::interne {

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

/// The names to spare, from both keys: the English one adds to the French one.
inline std::string epargnes(const Json& a) {
  auto noms = Champ::liste(a, "sauf");
  std::ranges::move(Champ::liste(a, "except"), std::back_inserter(noms));
  return Texte::joindre(noms, ", ");
}

}  // namespace tarnavelle::interne
