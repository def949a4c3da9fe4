#include "Porte/OutilVoix.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

/// What a table of names holds for a parameter, under its name or else its dashed form.
template <class Table>
auto trouver(const Table& table, const ParamVoix& p) {
  const auto trouve = table.find(p.nom);
  return trouve != table.end() ? trouve : table.find(p.avecTirets());
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

std::string ParamVoix::avecTirets() const {
  std::string forme = nom;
  std::ranges::replace(forme, '_', '-');
  return forme;
}

bool ParamVoix::estNomme(std::string_view donne) const {
  return std::ranges::equal(donne, nom, {}, [](char c) { return c == '-' ? '_' : c; });
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
    if (p.genre == ParamVoix::Genre::booleen) noms.insert({p.nom, p.avecTirets()});
  return noms;
}

std::vector<const ParamVoix*> OutilVoix::textes() const {
  std::vector<const ParamVoix*> ordre;
  for (const bool requis : {true, false})
    for (const ParamVoix& p : parametres)
      if (p.genre == ParamVoix::Genre::texte && p.requis == requis) ordre.push_back(&p);
  return ordre;
}

Json OutilVoix::arguments(const MotsCLI& mots) const {
  Json charge = Json::object();
  for (const ParamVoix& p : parametres) {
    const bool booleen = p.genre == ParamVoix::Genre::booleen;
    if (const auto option = trouver(mots.options, p); option != mots.options.end())
      charge[p.nom] = booleen ? Json(Texte::minuscules(option->second) != "false") : Json(option->second);
    else if (booleen && trouver(mots.drapeaux, p) != mots.drapeaux.end())
      charge[p.nom] = true;
  }
  auto mot = mots.positionnels.begin();
  for (const ParamVoix* p : textes())
    if (mot != mots.positionnels.end() && !charge.contains(p->nom)) charge[p->nom] = *mot++;
  return charge;
}

Json OutilVoix::json() const {
  return {{"type", "function"}, {"name", nom}, {"description", description}, {"parameters", schema()}};
}

}  // namespace tarnavelle
