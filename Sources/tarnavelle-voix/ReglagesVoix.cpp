#include "ReglagesVoix.hpp"

#include <algorithm>
#include <vector>

#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"
#include "Socle/URL.hpp"
#include "Voix/RequeteIntentions.hpp"

namespace tarnavelle::Voix {
namespace {

constexpr std::string_view autre = "autre";

std::vector<Reglages::Cle> table() {
  static const std::vector<std::string> cles = RealtimeProvider::clesDistinctes();
  std::vector<Reglages::Cle> rangs;
  for (const std::string& cle : cles) rangs.push_back({cle, "clé d'un service vocal", Reglages::enSecret});
  rangs.insert(rangs.end(), {{Cles::service, "service vocal : openai, openai-2.1, grok ou autre"},
                             {Cles::modele, "modèle demandé au service"},
                             {Cles::voix, "voix demandée au service"},
                             {Cles::profil, "écoute : casque ou haut-parleurs"},
                             {Cles::micro, "micro : son numéro ou une partie de son nom"},
                             {Cles::hautParleur, "haut-parleur, de même"},
                             {Cles::url, "adresse d'un autre service (wss://…)"},
                             {Cles::cle, "clé de cet autre service", Reglages::enSecret},
                             {Cles::dialecte, "son dialecte : openai ou xai"},
                             {AccesTexte::cleURL, "adresse d'un modèle de texte, pour les demandes libres"},
                             {AccesTexte::cleSecrete, "clé de ce modèle", Reglages::enSecret},
                             {AccesTexte::cleModele, "nom de ce modèle"}});
  return rangs;
}

std::string offerts() {
  return Texte::joindre(RealtimeProvider::tous(), ", ", [](const RealtimeProvider& p) { return p.id; }) + ", " +
         std::string(autre);
}

Resultat<Service, RefusService> autreService(const Reglages& reglages) {
  const auto adresse = reglages.texte(Cles::url);
  if (!adresse)
    return Sinon{RefusService{"L'adresse de cet autre service manque.",
                              "Réglez " + std::string(Cles::url) + ", et son dialecte."}};
  const auto url = URL::lire(*adresse);
  const bool lisible =
      url && url->port != 0 && (url->schema == "wss" || (url->schema == "ws" && url->surCetteMachine()));
  if (!lisible)
    return Sinon{RefusService{std::string(Cles::url) + " n'est pas une adresse utilisable.",
                              "Il faut wss://… (ws:// n'est toléré que sur la machine même)."}};
  const auto dialecte = dialecteDepuis(reglages.texte(Cles::dialecte).value_or("openai"));
  if (!dialecte)
    return Sinon{RefusService{std::string(Cles::dialecte) + " vaut openai ou xai.", "Corrigez ce réglage."}};
  Service service{
      .provider = *dialecte == DialecteRealtime::xai ? RealtimeProvider::grok() : RealtimeProvider::openai(),
      .cle = reglages.texte(Cles::cle).value_or("")};
  service.provider.id = autre;
  service.provider.titre = service.provider.editeur = url->hote;
  service.provider.endpoint = *adresse;
  service.provider.cleEnv = Cles::cle;
  if (service.cle.empty())
    return Sinon{RefusService{"La clé de cet autre service manque.", "Réglez " + std::string(Cles::cle) + "."}};
  return service;
}

}  // namespace

const Reglages::Famille& familleVoix() {
  static const std::vector<Reglages::Cle> cles = table();
  static const Reglages::Famille famille{.fichier = "voix", .cles = cles};
  return famille;
}

Resultat<Service, RefusService> choisirService(const Reglages& reglages,
                                               const std::optional<std::string>& choisi) {
  const auto voulu = choisi ? choisi : reglages.texte(Cles::service);
  if (voulu == autre || (!voulu && reglages.texte(Cles::url))) return autreService(reglages);
  if (voulu && !RealtimeProvider::parId(voulu))
    return Sinon{
        RefusService{"Service inconnu : « " + Inoffensif::montrable(Texte::tronquer(*voulu, 40)) + " ».",
                     "Connus : " + offerts() + "."}};
  RealtimeProvider::Cles presentes;
  for (const std::string& cle : RealtimeProvider::clesDistinctes())
    if (reglages.texte(cle)) presentes.insert(cle);
  const RealtimeProvider* provider =
      voulu ? RealtimeProvider::parId(voulu) : RealtimeProvider::actif(presentes, std::nullopt);
  if (!provider || !presentes.contains(provider->cleEnv)) {
    const std::string cles =
        provider ? provider->cleEnv : Texte::joindre(RealtimeProvider::clesDistinctes(), " ou ");
    return Sinon{RefusService{
        provider ? "La clé de " + provider->titre + " manque." : "Aucune clé de service vocal n'est réglée.",
        "Donnez " + cles + " dans l'environnement, ou gardez-la par « tarnavelle-voix --regler " +
            (provider ? provider->cleEnv : RealtimeProvider::openai().cleEnv) + " »."}};
  }
  return Service{.provider = *provider, .cle = *reglages.texte(provider->cleEnv)};
}

}  // namespace tarnavelle::Voix
