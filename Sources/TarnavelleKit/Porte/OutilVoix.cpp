#include "Porte/OutilVoix.hpp"

#include <algorithm>

#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

std::string avecTirets(std::string nom) {
  std::ranges::replace(nom, '_', '-');
  return nom;
}

/// What a table of names holds for a parameter, under its name or else its dashed form.
template <class Table>
auto trouver(const Table& table, const std::string& nom) {
  const auto trouve = table.find(nom);
  return trouve != table.end() ? trouve : table.find(avecTirets(nom));
}

}  // namespace

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

std::set<std::string, std::less<>> OutilVoix::drapeauxBooleens() const {
  std::set<std::string, std::less<>> noms;
  for (const ParamVoix& p : parametres)
    if (p.genre == ParamVoix::Genre::booleen) noms.insert({p.nom, avecTirets(p.nom)});
  return noms;
}

Json OutilVoix::arguments(const MotsCLI& mots) const {
  Json charge = Json::object();
  std::vector<const ParamVoix*> ouverts;
  for (const ParamVoix& p : parametres) {
    const bool booleen = p.genre == ParamVoix::Genre::booleen;
    if (const auto option = trouver(mots.options, p.nom); option != mots.options.end())
      charge[p.nom] = booleen ? Json(Texte::minuscules(option->second) != "false") : Json(option->second);
    else if (booleen && trouver(mots.drapeaux, p.nom) != mots.drapeaux.end())
      charge[p.nom] = true;
    else if (!booleen)
      ouverts.push_back(&p);
  }
  std::stable_partition(ouverts.begin(), ouverts.end(), [](const ParamVoix* p) { return p->requis; });
  for (std::size_t i = 0; i < ouverts.size() && i < mots.positionnels.size(); ++i)
    charge[ouverts[i]->nom] = mots.positionnels[i];
  return charge;
}

Json OutilVoix::json() const {
  return {{"type", "function"}, {"name", nom}, {"description", description}, {"parameters", schema()}};
}

}  // namespace tarnavelle
