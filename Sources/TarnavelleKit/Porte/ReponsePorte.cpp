#include "Porte/ReponsePorte.hpp"

#include <utility>

#include "Socle/LectureJSON.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

std::optional<PorteJSON> nombre(const Json& json) {
  if (const auto n = entierExact(json)) return PorteJSON{PorteJSON::entier{*n}};
  if (const auto d = reel(json)) return PorteJSON{PorteJSON::reel{*d}};
  return std::nullopt;
}

/// Reads an optional member: absent or null is empty, a mistyped one makes `lisible` false.
std::optional<std::string> texteFacultatif(const Json& objet, std::string_view cle, bool& lisible) {
  const Json* membre = Champ::membre(objet, cle);
  if (!membre || membre->is_null()) return std::nullopt;
  if (!membre->is_string()) {
    lisible = false;
    return std::nullopt;
  }
  return membre->get<std::string>();
}

}  // namespace

std::optional<PorteJSON> PorteJSON::depuis(const Json& json) {
  switch (json.type()) {
    case Json::value_t::null: return PorteJSON{nul{}};
    case Json::value_t::boolean: return PorteJSON{bool_{json.get<bool>()}};
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
    case Json::value_t::number_float:
    case Json::value_t::binary: return nombre(json);
    case Json::value_t::string: return PorteJSON{texte{json.get<std::string>()}};
    case Json::value_t::array: {
      tableau t;
      t.valeurs.reserve(json.size());
      for (const Json& element : json) {
        auto valeur = depuis(element);
        if (!valeur) return std::nullopt;
        t.valeurs.push_back(std::move(*valeur));
      }
      return PorteJSON{std::move(t)};
    }
    case Json::value_t::object: {
      objet o;
      for (const auto& [cle, membre] : json.items()) {
        auto valeur = depuis(membre);
        if (!valeur) return std::nullopt;
        o.membres.emplace(cle, std::move(*valeur));
      }
      return PorteJSON{std::move(o)};
    }
    case Json::value_t::discarded: return std::nullopt;
  }
  return std::nullopt;
}

Json PorteJSON::json() const {
  return std::visit(
      Selon{[](const nul&) { return Json(nullptr); }, [](const bool_& v) { return Json(v.valeur); },
            [](const entier& v) { return Json(v.valeur); }, [](const reel& v) { return Json(v.valeur); },
            [](const texte& v) { return Json(v.valeur); },
            [](const tableau& v) {
              Json liste = Json::array();
              for (const PorteJSON& element : v.valeurs) liste.push_back(element.json());
              return liste;
            },
            [](const objet& v) {
              Json carte = Json::object();
              for (const auto& [cle, membre] : v.membres) carte[cle] = membre.json();
              return carte;
            }},
      cas);
}

ReponsePorte ReponsePorte::succes(std::optional<std::string> spoken, std::optional<PorteJSON> data) {
  return {.ok = true, .spoken_text = std::move(spoken), .data = std::move(data), .error = {}};
}

ReponsePorte ReponsePorte::echec(std::string message) {
  return {.ok = false, .spoken_text = {}, .data = {}, .error = std::move(message)};
}

const ReponsePorte ReponsePorte::pasCable = ReponsePorte::echec("pas encore câblé");

std::optional<ReponsePorte> ReponsePorte::depuis(const Json& json) {
  const Json* ok = Champ::membre(json, "ok");
  if (!ok || !ok->is_boolean()) return std::nullopt;
  bool lisible = true;
  ReponsePorte reponse{.ok = ok->get<bool>(),
                       .spoken_text = texteFacultatif(json, "spoken_text", lisible),
                       .data = {},
                       .error = texteFacultatif(json, "error", lisible)};
  if (const Json* data = Champ::membre(json, "data"); data && !data->is_null()) {
    reponse.data = PorteJSON::depuis(*data);
    lisible = lisible && reponse.data;
  }
  if (!lisible) return std::nullopt;
  return reponse;
}

std::optional<ReponsePorte> ReponsePorte::lire(std::string_view texte) {
  const auto json = LectureJSON::objet(texte);
  return json ? depuis(*json) : std::nullopt;
}

Json ReponsePorte::json() const {
  Json objet = {{"ok", ok}};
  if (spoken_text) objet["spoken_text"] = *spoken_text;
  if (data) objet["data"] = data->json();
  if (error) objet["error"] = *error;
  return objet;
}

std::string ComptesRendusVoix::porteDit(const ReponsePorte& reponse) {
  const std::string brut = (reponse.ok ? reponse.spoken_text : reponse.error).value_or("");
  const auto phrase = Texte::rogner(brut);
  if (reponse.ok) return phrase.empty() ? "C'est fait sur le Mac." : std::string(phrase);
  if (phrase.empty()) return "Tarnavelle ne répond pas là-bas.";
  return "Le Mac a refusé : " + std::string(phrase);
}

}  // namespace tarnavelle
