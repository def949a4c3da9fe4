#include "Porte/PorteControle.hpp"

#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/URL.hpp"

namespace tarnavelle {
namespace {

/// Far above any endpoint file; keeps a wrong file from being read whole.
constexpr std::size_t tailleEndpointMax = 64 * 1024;

constexpr std::string_view cheminAction = "/action";
constexpr std::string_view nomDossier = "Tarnavelle";
constexpr std::string_view nomEndpoint = "porte-commande.json";

bool urlComplete(const std::string& texte) {
  thread_local std::string derniere;  // call after call it is the same one
  if (texte == derniere) return true;
  const auto url = URL::lire(texte);
  if (!url || url->schema.empty()) return false;
  derniere = texte;
  return true;
}

std::string urlAction(std::string_view base) {
  if (base.ends_with(cheminAction)) return std::string(base);
  while (base.starts_with('/')) base.remove_prefix(1);
  while (base.ends_with('/')) base.remove_suffix(1);
  return std::string(base).append(cheminAction);
}

}  // namespace

std::optional<EndpointPorte> EndpointPorte::lire(std::string_view texte) {
  const auto objet = LectureJSON::objet(texte);
  if (!objet) return std::nullopt;
  const Json* host = Champ::membre(*objet, "host");
  const Json* token = Champ::membre(*objet, "token");
  const auto entier = [&](std::string_view cle) {
    const Json* membre = Champ::membre(*objet, cle);
    return membre ? entierExact(*membre) : std::nullopt;
  };
  const auto pid = entier("pid");
  const auto port = entier("port");
  if (!host || !host->is_string() || !token || !token->is_string() || !pid || !port) return std::nullopt;
  return EndpointPorte{host->get<std::string>(), *pid, *port, token->get<std::string>()};
}

Json EndpointPorte::json() const { return {{"host", host}, {"pid", pid}, {"port", port}, {"token", token}}; }

std::string EndpointPorte::url() const {
  return "http://" + host + ":" + std::to_string(port) + std::string(cheminAction);
}

namespace PorteControle {

std::string_view urlBase(std::string_view url) {
  if (url.ends_with(cheminAction)) url.remove_suffix(cheminAction.size());
  return url;
}

std::filesystem::path dossierSupport(const Variables& environnement) {
  return dossierApplicationSupport(environnement) / nomDossier;
}

std::filesystem::path cheminEndpoint(const Variables& environnement) {
  return dossierSupport(environnement) / nomEndpoint;
}

std::string cheminEndpointUsuel() {
  return std::string(applicationSupport).append("/").append(nomDossier).append("/").append(nomEndpoint);
}

std::optional<EndpointPorte> lireEndpoint(const std::filesystem::path& chemin) {
  const auto texte = lireFichier(chemin, tailleEndpointMax);
  return texte ? EndpointPorte::lire(*texte) : std::nullopt;
}

RecherchePorte chercherPorte(const Variables& environnement) {
  RecherchePorte r{.porte = {}, .variable = environnement.texte("TARNAVELLE_CONTROL_URL"), .endpoint = {}};
  if (r.variable) {
    if (std::string url = urlAction(*r.variable); urlComplete(url)) {
      r.porte = {std::move(url), environnement.texte("TARNAVELLE_CONTROL_TOKEN").value_or("")};
      return r;
    }
  }
  r.endpoint = lireEndpoint(cheminEndpoint(environnement));
  if (r.endpoint)
    if (std::string url = r.endpoint->url(); urlComplete(url)) r.porte = {std::move(url), r.endpoint->token};
  return r;
}

std::optional<PorteResolue> resoudrePorte(const Variables& environnement) {
  return std::move(chercherPorte(environnement).porte);
}

}  // namespace PorteControle
}  // namespace tarnavelle
