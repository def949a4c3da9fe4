#include "DirePorte.hpp"

#include <system_error>

#include "Appel/AppelPorte.hpp"
#include "Socle/Texte.hpp"
#include "Socle/URL.hpp"
#include "Sortie.hpp"

namespace tarnavelle::DirePorte {
namespace {

constexpr std::string_view nomVariable = "TARNAVELLE_CONTROL_URL";
constexpr std::string_view formeAttendue = "il faut http://HÔTE:PORT";

/// An address that cannot be used, without what may be a secret in it.
std::string inutilisable(std::string_view adresse, std::string_view jeton) {
  const auto apresUtilisateur = adresse.find_last_of('@') + 1;  // 0 without one
  return citer(Texte::sansSecret(adresse.substr(apresUtilisateur), jeton));
}

}  // namespace

std::string adresse(const PorteResolue& porte) {
  const auto url = URL::lire(porte.url);
  if (!url) return {};
  const auto chemin = url->cible.substr(0, url->cible.find('?'));
  return Texte::sansSecret(std::string(url->schema).append("://").append(url->hoteEtPort).append(chemin),
                           porte.jeton);
}

std::string variable(const RecherchePorte& recherche, const Variables& environnement) {
  const std::string nom(nomVariable);
  if (!recherche.variable) return nom + " n'est pas définie";
  if (recherche.parVariable()) return nom + " décide";
  const auto jeton = environnement.texte("TARNAVELLE_CONTROL_TOKEN").value_or("");
  return nom + " n'est pas une adresse complète, " + inutilisable(*recherche.variable, jeton) + " : " +
         std::string(formeAttendue);
}

std::string fichier(const RecherchePorte& recherche, const Variables& environnement) {
  const auto chemin = PorteControle::cheminEndpoint(environnement);
  if (recherche.parVariable()) return chemin.string() + " n'est pas consulté";
  if (recherche.porte) return chemin.string() + " décide";
  if (recherche.endpoint)
    return chemin.string() + " donne une adresse inutilisable, " +
           inutilisable(recherche.endpoint->url(), recherche.endpoint->token);
  std::error_code erreur;
  return chemin.string() + (std::filesystem::exists(chemin, erreur)
                                ? " est illisible, ou n'est pas celui d'une porte"
                                : " n'existe pas");
}

std::vector<std::string> introuvable(const RecherchePorte& recherche, const Variables& environnement) {
  return {std::string(porteIntrouvable),
          variable(recherche, environnement) + " ; " + fichier(recherche, environnement) + "."};
}

std::string origine(const RecherchePorte& recherche, const Variables& environnement) {
  return "Son adresse, " + adresse(*recherche.porte) + ", vient de " +
         (recherche.parVariable() ? std::string(nomVariable)
                                  : PorteControle::cheminEndpoint(environnement).string()) +
         ". « tarnavellectl porte » en dit plus.";
}

std::string raison(const EchecHTTP& echec, std::chrono::seconds attente) {
  if (const auto* faute = std::get_if<EchecHTTP::Faute>(&echec.cause)) switch (*faute) {
      case EchecHTTP::Faute::url: return "son adresse est inutilisable, " + std::string(formeAttendue);
      case EchecHTTP::Faute::entete: return "son jeton contient un caractère de contrôle";
      case EchecHTTP::Faute::reponse:
        return "ce qui est venu n'est pas une réponse HTTP, ou dépasse " +
               std::to_string(AppelPorte::bornes.corpsMax >> 20) + " Mio";
    }
  const auto erreur = std::get<ErreurReseau>(echec.cause);
  if (erreur == ErreurReseau::delaiDepasse && echec.partie)
    return "pas de réponse entière en " + std::to_string(attente.count()) + " s";
  return std::string(description(erreur));
}

std::vector<std::string> sansReponse(const EchecHTTP& echec, std::chrono::seconds attente,
                                     const RecherchePorte& recherche, const Variables& environnement) {
  return {"La porte n'a pas répondu : " + raison(echec, attente) +
              (echec.partie ? ". Le verbe a pu être exécuté." : ". Rien n'a été envoyé."),
          origine(recherche, environnement)};
}

}  // namespace tarnavelle::DirePorte
