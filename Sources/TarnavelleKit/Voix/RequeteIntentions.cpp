#include "Voix/RequeteIntentions.hpp"

#include <nlohmann/json.hpp>

#include "Socle/EcritureJSON.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/LectureIndulgente.hpp"
#include "Socle/Texte.hpp"
#include "Socle/URL.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t motMax = 200;  ///< user-perceived characters of what the service says

/// What the model said: a text, or the texts of its parts.
std::string contenu(const Json& message) {
  const Json* const dit = Champ::membre(message, "content");
  if (!dit || !dit->is_array()) return Champ::texte(message, "content");
  std::string texte;
  for (const Json& partie : *dit) texte += Champ::texte(partie, "text");
  return texte;
}

/// The service's own words of a refusal; may be empty.
std::string motDuService(const std::optional<Json>& corps, const AccesTexte& acces) {
  if (!corps) return {};
  const Json* const erreur = Champ::membre(*corps, "error");
  std::string mot =
      erreur && erreur->is_object() ? Champ::texte(*erreur, "message") : Champ::texte(*corps, "error");
  mot = Texte::sansSecret(mot, acces.cle);
  return Inoffensif::montrable(Texte::tronquer(Texte::rogner(mot), motMax));
}

std::string refusDuStatut(int statut) {
  switch (statut) {
    case 401:
    case 403: return std::string("la clé est refusée. Vérifiez ") + AccesTexte::cleSecrete;
    case 402: return "le compte n'a plus de crédit. Rechargez-le, ou changez de service";
    case 404:
      return std::string("rien n'y répond à ce nom. Vérifiez ") + AccesTexte::cleURL + " et " +
             AccesTexte::cleModele;
    case 429: return "trop de demandes, ou plus de crédit. Réessayez plus tard";
    default: return "il répond par une erreur " + std::to_string(statut);
  }
}

}  // namespace

std::optional<AccesTexte> AccesTexte::lire(const Variables& reglages) {
  AccesTexte acces{.url = reglages.texte(cleURL).value_or(""),
                   .cle = reglages.texte(cleSecrete).value_or(""),
                   .modele = reglages.texte(cleModele).value_or("")};
  if (acces.url.empty() && acces.modele.empty()) return std::nullopt;
  return acces;
}

std::optional<std::string> AccesTexte::refus() const {
  const std::string donnez = "Donnez ";
  if (url.empty()) return donnez + "l'adresse du modèle de texte par " + cleURL + ".";
  if (modele.empty()) return donnez + "le nom du modèle de texte par " + cleModele + ".";
  if (Texte::porteControle(cle)) return "La clé du modèle de texte contient un caractère de contrôle.";
  const auto lue = URL::lire(url);
  if (!lue || lue->port == 0) return "L'adresse du modèle de texte n'est pas lisible.";
  if (lue->hoteEtPort.data() != url.data() + lue->schema.size() + 3)
    return "L'adresse du modèle de texte ne doit contenir ni nom ni mot de passe.";
  if (lue->schema == "https" || (lue->schema == "http" && lue->surCetteMachine())) return std::nullopt;
  return "L'adresse du modèle de texte doit être en https:// (http:// n'est toléré que sur la machine même).";
}

RequeteHTTP RequeteIntentions::requete(const AccesTexte& acces, const Demande& demande) {
  const auto message = [](std::string_view role, std::string_view texte) -> Json {
    return {{"role", role}, {"content", Texte::reparer(texte)}};
  };
  const Json corps = {
      {"model", Texte::reparer(acces.modele)},
      {"messages",
       Json::array({message("system", MoteurIntentions::prompt(demande.monde, demande.clis, demande.adresse)),
                    message("user", demande.phrase)})},
      {"stream", false}};
  RequeteHTTP requete{.methode = "POST",
                      .url = acces.url + (acces.url.ends_with('/') ? "" : "/") + "chat/completions",
                      .entetes = {{"Content-Type", "application/json"}, {"Accept", "application/json"}},
                      .corps = EcritureJSON::compacte(corps).value()};  // repaired texts can always be written
  if (!acces.cle.empty()) requete.entetes.push_back({"Authorization", "Bearer " + acces.cle});
  return requete;
}

Resultat<std::string, std::string> RequeteIntentions::reponse(const AccesTexte& acces, int statut,
                                                              std::string_view corps) {
  const auto objet = LectureIndulgente::objet(corps);
  const auto sinon = [&](const std::string& raison) {
    const std::string mot = motDuService(objet, acces);
    return Sinon{"Le modèle de texte ne répond pas : " + raison + (mot.empty() ? "" : " (« " + mot + " »)") +
                 "."};
  };
  if (!estUnSucces(statut)) return sinon(refusDuStatut(statut));
  const Json* const choix = objet ? Champ::membre(*objet, "choices") : nullptr;
  const Json* const message =
      choix && choix->is_array() && !choix->empty() ? Champ::membre(choix->front(), "message") : nullptr;
  if (!message) return sinon("sa réponse n'est pas lisible");
  std::string texte = contenu(*message);
  if (Texte::rogner(texte).empty()) return sinon("sa réponse est vide");
  return texte;
}

}  // namespace tarnavelle
