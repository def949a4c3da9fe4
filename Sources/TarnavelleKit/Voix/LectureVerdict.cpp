#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

#include "Socle/LectureIndulgente.hpp"
#include "Socle/Texte.hpp"
#include "Voix/MoteurIntentions.hpp"

namespace tarnavelle::MoteurIntentions {
namespace {

/// A text as the model means it: trimmed, "null" in any case being none.
std::string lireCle(const Json& objet, std::string_view cle) {
  const std::string* texte = Champ::chaine(objet, cle);
  if (!texte || Texte::minuscules(*texte) == "null") return {};
  return std::string(Texte::rogner(*texte));
}

std::string lireCle(const Json& objet, std::string_view cle, std::string_view repli) {
  auto texte = lireCle(objet, cle);
  return texte.empty() ? lireCle(objet, repli) : texte;
}

/// Only a boolean: "false" as a text is a mistake of the model's, and takes the default.
std::optional<bool> booleen(const Json& objet, std::string_view cle) {
  const Json* valeur = Champ::membre(objet, cle);
  const auto* b = valeur ? valeur->get_ptr<const Json::boolean_t*>() : nullptr;
  return b ? std::optional(*b) : std::nullopt;
}

std::optional<double> nombre(const Json& objet, std::string_view cle) {
  const Json* valeur = Champ::membre(objet, cle);
  return valeur ? MoteurIntentions::nombre(*valeur) : std::nullopt;
}

std::string action(const Json& commande) { return Texte::minuscules(Champ::texte(commande, "action")); }

/// The commands that a verdict lists, or null.
const Json* liste(const Json& objet) {
  for (const char* cle : {"commandes", "commands"})
    if (const Json* valeur = Champ::membre(objet, cle); valeur && valeur->is_array()) return valeur;
  return nullptr;
}

bool estVerdict(const Json& objet) {
  return liste(objet) || booleen(objet, "adressee") || booleen(objet, "directed_at_app");
}

bool estCommande(const Json& objet) { return Champ::chaine(objet, "action"); }

/// `commandes` is the list, or null.
VerdictIntentions verdict(const Json& objet, const Json* commandes) {
  VerdictIntentions verdict;
  const auto adressee = booleen(objet, "adressee");
  verdict.adressee = adressee ? *adressee : booleen(objet, "directed_at_app").value_or(true);
  const auto confiance = nombre(objet, "confiance");
  verdict.confiance = std::clamp(confiance ? *confiance : nombre(objet, "confidence").value_or(0), 0.0, 1.0);
  const std::string* raison = Champ::chaine(objet, "raison");
  if (!raison) raison = Champ::chaine(objet, "reasoning");
  if (raison) verdict.raison = Texte::premiers(*raison, raisonMax);
  if (commandes)
    for (const Json& element : *commandes)
      if (auto intention = commande(element)) verdict.commandes.push_back(std::move(*intention));
  return verdict;
}

TeneurReponse teneur(const VerdictIntentions& verdict, const Json* commandes) {
  if (!verdict.adressee) return TeneurReponse::rien;
  if (!verdict.commandes.empty()) return TeneurReponse::demande;
  const bool riens =
      commandes && std::ranges::all_of(*commandes, [](const Json& c) { return action(c) == "rien"; });
  return riens ? TeneurReponse::rien : TeneurReponse::illisible;
}

LectureVerdict lireObjet(const Json& objet, const Json* commandes) {
  LectureVerdict lecture{verdict(objet, commandes), TeneurReponse::illisible};
  lecture.teneur = teneur(*lecture.verdict, commandes);
  return lecture;
}

/// The answer without the model's thoughts: the drafts in them are no answer, even when nothing follows.
std::string_view sansReflexion(std::string_view reponse) {
  if (const auto fin = reponse.find("</think"); fin != reponse.npos) return reponse.substr(fin);
  return reponse.substr(0, reponse.find("<think"));
}

}  // namespace

std::optional<Json> objetJSON(std::string_view texte) {
  const auto debut = texte.find('{');
  const auto fin = texte.rfind('}');
  if (debut == texte.npos || fin == texte.npos || fin < debut) return std::nullopt;
  return LectureJSON::objet(texte.substr(debut, fin - debut + 1));
}

std::optional<double> nombre(const Json& valeur) {
  if (!valeur.is_string()) return reel(valeur);
  auto texte = valeur.get<std::string>();
  std::ranges::replace(texte, ',', '.');
  if (texte.find_first_not_of("+-.0123456789eE") != texte.npos) return std::nullopt;
  // A stream, because not every standard library converts decimals with from_chars.
  std::istringstream flux(texte);
  flux.imbue(std::locale::classic());
  double d = 0;
  if (!(flux >> d) || flux.peek() != std::istringstream::traits_type::eof()) return std::nullopt;
  return d;
}

LectureVerdict lire(std::string_view reponse) {
  reponse = sansReflexion(reponse);
  const auto entier = objetJSON(reponse);
  if (entier && (estVerdict(*entier) || !estCommande(*entier))) return lireObjet(*entier, liste(*entier));

  std::optional<Json> premier;
  Json seules = Json::array();
  const bool intacts = LectureIndulgente::chaqueObjet(reponse, [&](const Json& objet) {
    if (estVerdict(objet)) premier = objet;
    if (estCommande(objet)) seules.push_back(objet);
    return !premier;
  });
  if (premier) return lireObjet(*premier, liste(*premier));
  // Beside a broken object, they may be the commands of a verdict that said no.
  if (!intacts) seules.clear();
  if (!seules.empty()) return lireObjet(seules.front(), &seules);
  return entier ? lireObjet(*entier, nullptr) : LectureVerdict{};
}

std::optional<VerdictIntentions> decoder(std::string_view reponse) {
  if (const auto entier = objetJSON(reponse)) return verdict(*entier, liste(*entier));
  return lire(reponse).verdict;
}

std::optional<IntentionTarnavelle> commande(const Json& objet) {
  using I = IntentionTarnavelle;
  const auto action = MoteurIntentions::action(objet);
  if (action == "dicter" || action == "prompt_agent") {
    auto texte = lireCle(objet, "texte", "text");
    if (texte.empty()) return std::nullopt;
    return I{I::dicter{.agent = lireCle(objet, "agent"),
                       .texte = std::move(texte),
                       .valider = booleen(objet, "valider").value_or(true)}};
  }
  if (action == "focus") {
    auto cible = lireCle(objet, "cible", "target");
    if (cible.empty()) return std::nullopt;
    return I{I::focus{.cible = std::move(cible)}};
  }
  if (action == "aller_scene") {
    auto nom = lireCle(objet, "nom");
    if (nom.empty()) return std::nullopt;
    return I{I::allerScene{.nom = std::move(nom)}};
  }
  if (action == "ouvrir_agent" || action == "spawn_agent")
    return I{I::ouvrirAgent{.cli = lireCle(objet, "cli", "agent"),
                            .dossier = lireCle(objet, "dossier"),
                            .hote = lireCle(objet, "hote")}};
  if (action == "ouvrir_web" || action == "open_browser") {
    auto cible = lireCle(objet, "cible", "url");
    if (cible.empty()) return std::nullopt;
    return I{I::ouvrirWeb{.cible = std::move(cible), .externe = booleen(objet, "externe").value_or(false)}};
  }
  if (action == "lire")
    return I{I::lire{.agent = lireCle(objet, "agent"),
                     .depuisPrompt = booleen(objet, "depuis_prompt").value_or(false)}};
  if (action == "resumer") return I{I::resumer{.agent = lireCle(objet, "agent")}};
  if (action == "etat") return I{I::etat{}};
  if (action == "repli") {
    auto texte = lireCle(objet, "texte");
    if (texte.empty()) return std::nullopt;
    return I{I::repli{.texte = std::move(texte)}};
  }
  return std::nullopt;
}

}  // namespace tarnavelle::MoteurIntentions
