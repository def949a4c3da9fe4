#include <boost/asio/connect.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/http/error.hpp>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "ConnexionInterne.hpp"
#include "Socle/Texte.hpp"
#include "Socle/URL.hpp"

namespace tarnavelle::interne {
namespace {

bool parmi(const Erreur& erreur, std::initializer_list<Erreur> liste) {
  for (const Erreur& e : liste)
    if (erreur == e) return true;
  return false;
}

ErreurReseau classerNom(const Erreur& erreur) {
  if (parmi(erreur, {asio::error::host_not_found, asio::error::no_data})) return ErreurReseau::hoteIntrouvable;
  return ErreurReseau::resolutionEchouee;
}

ErreurReseau classerConnexion(const Erreur& erreur) {
  if (parmi(erreur, {asio::error::network_unreachable, asio::error::network_down}))
    return ErreurReseau::reseauAbsent;
  if (erreur == asio::error::timed_out) return ErreurReseau::delaiDepasse;
  return ErreurReseau::connexionImpossible;
}

ErreurReseau classerNegociation(const Erreur& erreur, long verification, bool autoritesLues) {
  switch (verification) {
    case X509_V_OK: break;
    case X509_V_ERR_CERT_HAS_EXPIRED:
    case X509_V_ERR_ERROR_IN_CERT_NOT_BEFORE_FIELD:
    case X509_V_ERR_ERROR_IN_CERT_NOT_AFTER_FIELD: return ErreurReseau::certificatPerime;
    case X509_V_ERR_CERT_NOT_YET_VALID: return ErreurReseau::certificatPasEncoreValide;
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
      return autoritesLues ? ErreurReseau::racineInconnue : ErreurReseau::autoritesIllisibles;
    default: return ErreurReseau::certificatNonFiable;
  }
  if (parmi(erreur, {asio::error::connection_reset, asio::error::timed_out})) return classer(erreur);
  return ErreurReseau::tlsEchoue;
}

/// Whether one of these folders, separated by colons, holds anything.
bool unDossierGarni(std::string_view dossiers) {
  while (true) {
    const auto fin = dossiers.find(':');
    std::error_code erreur;
    const std::filesystem::directory_iterator dossier(dossiers.substr(0, fin), erreur);
    if (!erreur && dossier != std::filesystem::directory_iterator()) return true;
    if (fin == std::string_view::npos) return false;
    dossiers.remove_prefix(fin + 1);
  }
}

/// Where systems keep their authorities, for an OpenSSL that was built for another place.
constexpr const char* magasins[] = {"/etc/ssl/cert.pem", "/etc/ssl/certs/ca-certificates.crt",
                                    "/etc/pki/tls/certs/ca-bundle.crt", "/etc/ssl/ca-bundle.pem"};

/// Whether authorities were read: those the environment names, OpenSSL's own, or else the system's.
bool lireAutorites(SSL_CTX* contexte) {
  const char* fichier = std::getenv(X509_get_default_cert_file_env());
  const char* dossiers = std::getenv(X509_get_default_cert_dir_env());
  bool lues = SSL_CTX_load_verify_file(contexte, fichier ? fichier : X509_get_default_cert_file()) == 1;
  const char* consultes = dossiers ? dossiers : X509_get_default_cert_dir();
  SSL_CTX_load_verify_dir(contexte, consultes);
  if (!fichier) lues = lues || unDossierGarni(consultes);
  if (!fichier && !dossiers)
    for (const char* magasin : magasins) lues = lues || SSL_CTX_load_verify_file(contexte, magasin) == 1;
  ERR_clear_error();
  return lues;
}

}  // namespace

std::optional<Adresse> Adresse::depuis(std::string_view texte, std::string_view protocole) {
  auto url = URL::lire(texte);
  if (!url || Texte::porteControle(url->hote)) return std::nullopt;  // a percent-encoded NUL: another host
  const std::string schema = Texte::minuscules(url->schema);
  const bool tls = schema == std::string(protocole) + 's';
  if (!tls && schema != protocole) return std::nullopt;
  const std::uint16_t port = url->port.value_or(tls ? 443 : 80);
  if (port == 0) return std::nullopt;
  return Adresse{.tls = tls,
                 .hote = std::move(url->hote),
                 .port = port,
                 .entete = std::string(url->hoteEtPort),
                 .chemin = (url->cible.starts_with('/') ? "" : "/") + std::string(url->cible)};
}

ErreurReseau classer(const Erreur& erreur) {
  namespace beast = boost::beast;
  if (parmi(erreur, {asio::error::eof, asio::error::connection_reset, asio::error::connection_aborted,
                     asio::error::broken_pipe, asio::error::not_connected, asio::ssl::error::stream_truncated,
                     Erreur(EPROTOTYPE, asio::error::get_system_category()),  // macOS, of a socket being closed
                     beast::http::error::end_of_stream, beast::http::error::partial_message}))
    return ErreurReseau::connexionPerdue;
  if (parmi(erreur, {asio::error::network_unreachable, asio::error::network_down, asio::error::network_reset,
                     asio::error::host_unreachable}))
    return ErreurReseau::reseauAbsent;
  if (parmi(erreur, {asio::error::timed_out, beast::error::timeout})) return ErreurReseau::delaiDepasse;
  if (erreur == asio::error::operation_aborted) return ErreurReseau::annulee;
  if (erreur.category() == asio::error::get_ssl_category()) return ErreurReseau::tlsEchoue;
  return ErreurReseau::autre;
}

Connexion::Connexion(asio::io_context& boucle, bool tls) : boucle_(boucle), clair_(boucle) {
  if (!tls) return;
  contexte_.emplace(asio::ssl::context::tls_client);
  autoritesLues_ = lireAutorites(contexte_->native_handle());
  Erreur ignoree;
  contexte_->set_verify_mode(asio::ssl::verify_peer, ignoree);
  chiffre_.emplace(boucle, *contexte_);
}

void Connexion::ouvrir(const Adresse& adresse, std::optional<std::chrono::milliseconds> delai, Fini fini,
                       std::shared_ptr<void> tenue) {
  hote_ = adresse.hote;
  fini_ = std::move(fini);
  if (delai) {
    minuterie_.emplace(boucle_, *delai);
    minuterie_->async_wait([this, tenue](Erreur erreur) {
      if (erreur || !fini_) return;
      const Fini suite = std::exchange(fini_, nullptr);
      fermer();
      suite(ErreurReseau::delaiDepasse);
    });
  }
  Erreur pasUneAdresse;
  const auto ip = asio::ip::make_address(hote_, pasUneAdresse);
  const std::string service = std::to_string(adresse.port);
  if (!pasUneAdresse)
    return connecter(tcp::resolver::results_type::create({ip, adresse.port}, hote_, service), std::move(tenue));
  resolveur_.emplace(boucle_);
  resolveur_->async_resolve(hote_, service, [this, tenue](Erreur erreur, const auto& points) {
    if (!fini_) return;
    if (erreur) return conclure(classerNom(erreur));
    connecter(points, tenue);
  });
}

void Connexion::connecter(const tcp::resolver::results_type& points, std::shared_ptr<void> tenue) {
  asio::async_connect(next_layer(), points, [this, tenue](Erreur erreur, const tcp::endpoint&) {
    if (!fini_) return;
    if (erreur) return conclure(classerConnexion(erreur));
    Erreur ignoree;
    next_layer().set_option(tcp::no_delay(true), ignoree);
    next_layer().non_blocking(true, ignoree);
    if (chiffre_) return negocier(tenue);
    conclure(std::nullopt);
  });
}

void Connexion::negocier(std::shared_ptr<void> tenue) {
  SSL* ssl = chiffre_->native_handle();
  Erreur pasUneAdresse;
  asio::ip::make_address(hote_, pasUneAdresse);
  // Server names are for host names only (RFC 6066, section 3).
  if (pasUneAdresse && !SSL_set_tlsext_host_name(ssl, hote_.c_str())) return conclure(ErreurReseau::tlsEchoue);
  if (!SSL_set1_host(ssl, hote_.c_str())) return conclure(ErreurReseau::tlsEchoue);
  chiffre_->async_handshake(asio::ssl::stream_base::client, [this, tenue](Erreur erreur) {
    if (!fini_) return;
    if (!erreur) return conclure(std::nullopt);
    conclure(classerNegociation(erreur, SSL_get_verify_result(chiffre_->native_handle()), autoritesLues_));
  });
}

void Connexion::conclure(std::optional<ErreurReseau> erreur) {
  if (minuterie_) minuterie_->cancel();
  const Fini suite = std::exchange(fini_, nullptr);
  suite(erreur);
}

void Connexion::fermer() {
  if (resolveur_) resolveur_->cancel();
  if (minuterie_) minuterie_->cancel();
  Erreur ignoree;
  next_layer().close(ignoree);
  if (fini_) conclure(ErreurReseau::annulee);
}

}  // namespace tarnavelle::interne
