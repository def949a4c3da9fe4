#include "Porte/OutilVoix.hpp"

namespace tarnavelle {

std::string_view valeurBrute(ParamVoix::Genre genre) {
  switch (genre) {
    case ParamVoix::Genre::texte: return "string";
    case ParamVoix::Genre::booleen: return "boolean";
  }
  return {};
}

std::optional<ParamVoix::Genre> genreDepuis(std::string_view brute) {
  for (const auto genre : {ParamVoix::Genre::texte, ParamVoix::Genre::booleen})
    if (brute == valeurBrute(genre)) return genre;
  return std::nullopt;
}

Json OutilVoix::schema() const {
  Json proprietes = Json::object();
  Json requis = Json::array();
  for (const ParamVoix& p : parametres) {
    proprietes[p.nom] = {{"type", valeurBrute(p.genre)}, {"description", p.description}};
    if (p.requis) requis.push_back(p.nom);
  }
  return {{"type", "object"}, {"properties", std::move(proprietes)}, {"required", std::move(requis)}};
}

Json OutilVoix::json() const {
  return {{"type", "function"}, {"name", nom}, {"description", description}, {"parameters", schema()}};
}

}  // namespace tarnavelle
