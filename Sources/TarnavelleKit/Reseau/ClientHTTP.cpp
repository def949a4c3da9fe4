#include "Reseau/ClientHTTP.hpp"

#include <algorithm>
#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>
#include <system_error>
#include <thread>
#include <utility>
#include <variant>

namespace tarnavelle {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using asio::ip::tcp;
using Erreur = boost::system::error_code;
using Horloge = std::chrono::steady_clock;

constexpr std::uint32_t entetesMax = 64 * 1024;  ///< bytes of reply headers that are read
constexpr std::size_t lectureMax = 64 * 1024;    ///< bytes asked of the socket at a time

/// C0 and C1 control characters, the second as the UTF-8 of U+0080 to U+009F.
bool porteControle(std::string_view texte) {
  for (std::size_t i = 0; i < texte.size(); ++i) {
    const auto c = static_cast<unsigned char>(texte[i]);
    if (c < 0x20 || c == 0x7F) return true;
    if (c == 0xC2 && i + 1 < texte.size() && static_cast<unsigned char>(texte[i + 1]) < 0xA0) return true;
  }
  return false;
}

}  // namespace

/// Where a request goes. Two requests share a connection when they go to the same address.
struct ClientHTTP::Cible {
  std::string url;
  bool tls = false;
  std::string hote;  ///< name or address, without brackets
  std::uint16_t port = 0;
  std::string entete;  ///< the Host header
  std::string chemin;  ///< path and query

  bool memeAdresse(const Cible& autre) const {
    return tls == autre.tls && hote == autre.hote && port == autre.port;
  }

  static std::optional<Cible> depuis(std::string_view texte) {
    const auto url = boost::urls::parse_uri(boost::urls::string_view(texte.data(), texte.size()));
    if (!url || url->encoded_host().empty()) return std::nullopt;
    const bool tls = url->scheme_id() == boost::urls::scheme::https;
    if (!tls && url->scheme_id() != boost::urls::scheme::http) return std::nullopt;
    if (!url->port().empty() && url->port_number() == 0) return std::nullopt;  // zero or beyond 65535
    const std::uint16_t usuel = tls ? 443 : 80;
    const std::string chemin(url->encoded_target());
    return Cible{.url = std::string(texte),
                 .tls = tls,
                 .hote = std::string(url->host_address()),
                 .port = url->port_number() ? url->port_number() : usuel,
                 .entete = std::string(url->encoded_host_and_port()),
                 .chemin = chemin.starts_with('/') ? chemin : "/" + chemin};
  }

  std::string texte(const RequeteHTTP& requete) const {
    std::string t;
    t.reserve(256 + requete.corps.size());
    t.append(requete.methode).append(" ").append(chemin).append(" HTTP/1.1\r\nHost: ").append(entete);
    for (const EnteteHTTP& e : requete.entetes) t.append("\r\n").append(e.nom).append(": ").append(e.valeur);
    t.append("\r\nContent-Length: ").append(std::to_string(requete.corps.size()));
    return t.append("\r\n\r\n").append(requete.corps);
  }
};

/// One connection and the exchange under way on it. It owns its event loop, so that an exchange that
/// its caller no longer waits for can be carried to its end by another thread.
class ClientHTTP::Liaison {
 public:
  explicit Liaison(Cible cible) : cible_(std::move(cible)), resolveur_(boucle_) {
    tampon_.reserve(lectureMax);
    if (cible_.tls) {
      contexte_.emplace(asio::ssl::context::tls_client);
      Erreur ignoree;  // without the system's store no certificate verifies, which is the safe outcome
      contexte_->set_default_verify_paths(ignoree);
      contexte_->set_verify_mode(asio::ssl::verify_peer, ignoree);
      flux_.emplace<Chiffre>(boucle_, *contexte_);
    }
  }

  const Cible& cible() const { return cible_; }

  /// Other requests to the same address.
  void changerDeChemin(Cible cible) { cible_ = std::move(cible); }

  /// Whether it has carried an exchange: a connection that failed is not tried again.
  bool entamee() const { return entamee_; }

  /// One exchange, until it is over or `echeance`. Returns whether it is over.
  bool echanger(const RequeteHTTP& requete, std::size_t corpsMax, Horloge::time_point echeance) {
    requete_ = cible_.texte(requete);
    entamee_ = true;
    corpsMax_ = corpsMax;
    envoyes_ = 0;
    recu_ = false;
    fini_ = false;
    boucle_.restart();
    return avancer(echeance, [this] { connectee_ ? ecrire() : resoudre(); });
  }

  /// Carries an exchange on that `echanger` left unfinished.
  bool poursuivre(Horloge::time_point echeance) {
    return avancer(echeance, [] {});
  }

  std::optional<ReponseHTTP> prendreReponse() { return std::exchange(reponse_, std::nullopt); }

  /// After a failed exchange: no byte of the request has left.
  bool rienEnvoye() const { return envoyes_ == 0; }

  /// After a failed exchange: no byte of a reply has come.
  bool rienRecu() const { return !recu_; }

  /// Whether the last exchange left the connection open.
  bool connectee() const { return connectee_; }

  /// Whether another exchange may follow: the peer keeps the connection and has sent nothing since.
  bool reutilisable() {
    if (!connectee_ || tampon_.size() != 0) return false;
    Erreur erreur;
    char octet;
    socket().receive(asio::buffer(&octet, 1), tcp::socket::message_peek, erreur);
    return erreur == asio::error::would_block;
  }

 private:
  template <class Debut>
  bool avancer(Horloge::time_point echeance, Debut debut) {
    echeance_ = echeance;
    try {
      debut();
      if (!fini_) boucle_.run_until(echeance);
    } catch (const std::exception&) {  // memory or descriptors ran out
      clore();
    }
    return fini_;
  }

  using Clair = tcp::socket;
  using Chiffre = asio::ssl::stream<tcp::socket>;
  using Analyseur = http::response_parser<http::string_body>;

  tcp::socket& socket() {
    if (auto* chiffre = std::get_if<Chiffre>(&flux_)) return chiffre->next_layer();
    return std::get<Clair>(flux_);
  }

  template <class Action>
  void surFlux(Action action) {
    if (auto* chiffre = std::get_if<Chiffre>(&flux_))
      action(*chiffre);
    else
      action(std::get<Clair>(flux_));
  }

  /// Ends the exchange without a reply.
  void clore() {
    connectee_ = false;
    finir();
  }

  void finir() {
    fini_ = true;
    requete_ = {};
    analyseur_.reset();
    if (connectee_) return;
    Erreur ignoree;
    socket().close(ignoree);
  }

  void resoudre() {
    Erreur pasUneAdresse;
    const auto adresse = asio::ip::make_address(cible_.hote, pasUneAdresse);
    const std::string service = std::to_string(cible_.port);
    if (!pasUneAdresse)
      return connecter(tcp::resolver::results_type::create({adresse, cible_.port}, cible_.hote, service));
    resolveur_.async_resolve(cible_.hote, service, [this](Erreur erreur, const auto& points) {
      if (erreur) return clore();
      connecter(points);
    });
  }

  void connecter(const tcp::resolver::results_type& points) {
    asio::async_connect(socket(), points, [this](Erreur erreur, const tcp::endpoint&) {
      if (erreur) return clore();
      Erreur ignoree;
      socket().set_option(tcp::no_delay(true), ignoree);
      socket().non_blocking(true, ignoree);
      if (auto* chiffre = std::get_if<Chiffre>(&flux_)) return negocier(*chiffre);
      connectee_ = true;
      ecrire();
    });
  }

  void negocier(Chiffre& chiffre) {
    Erreur pasUneAdresse;
    asio::ip::make_address(cible_.hote, pasUneAdresse);
    // Server names are for host names only (RFC 6066, section 3).
    if (pasUneAdresse && !SSL_set_tlsext_host_name(chiffre.native_handle(), cible_.hote.c_str()))
      return clore();
    Erreur erreur;
    chiffre.set_verify_callback(asio::ssl::host_name_verification(cible_.hote), erreur);
    if (erreur) return clore();
    chiffre.async_handshake(asio::ssl::stream_base::client, [this](Erreur echec) {
      if (echec) return clore();
      connectee_ = true;
      ecrire();
    });
  }

  void ecrire() {
    if (auto* clair = std::get_if<Clair>(&flux_)) {  // at once, without a turn of the event loop
      Erreur erreur;
      envoyes_ = clair->write_some(asio::buffer(requete_), erreur);
      if (erreur && erreur != asio::error::would_block) return clore();
      if (envoyes_ == requete_.size()) return lire();
    }
    surFlux([this](auto& flux) {
      asio::async_write(flux, asio::buffer(requete_) + envoyes_, [this](Erreur erreur, std::size_t octets) {
        envoyes_ += octets;
        // A peer that refuses a large body may have said why before it closed.
        if (erreur && envoyes_ == 0) return clore();
        lire();
      });
    });
  }

  /// Reads what is there, then waits for more: a reply that is already here costs no turn of the loop.
  void lire() {
    while (true) {
      if (!analyseur_) {
        analyseur_.emplace();
        analyseur_->eager(true);
        analyseur_->body_limit(corpsMax_);
        analyseur_->header_limit(entetesMax);
      }
      Erreur erreur;
      surFlux([&](auto& flux) { http::read_some(flux, tampon_, *analyseur_, erreur); });
      recu_ = recu_ || analyseur_->got_some();
      if (erreur == asio::error::would_block) return attendreLecture();
      if (erreur) return clore();
      if (analyseur_->is_done()) {
        const auto statut = analyseur_->get().result_int();
        if (statut < 100 || statut >= 200) return terminer(static_cast<int>(statut));
        analyseur_.reset();  // an interim response precedes the final one
      }
      // A peer that never lets us wait must not outlast the caller either.
      if (Horloge::now() >= echeance_) return asio::post(boucle_, [this] { lire(); });
    }
  }

  void attendreLecture() {
    socket().async_wait(tcp::socket::wait_read, [this](Erreur erreur) {
      if (erreur) return clore();
      lire();
    });
  }

  void terminer(int statut) {
    connectee_ = analyseur_->keep_alive() && envoyes_ == requete_.size();
    reponse_ = ReponseHTTP{statut, std::move(analyseur_->get().body())};
    finir();
  }

  Cible cible_;
  asio::io_context boucle_{1};
  tcp::resolver resolveur_;
  std::optional<asio::ssl::context> contexte_;
  std::variant<Clair, Chiffre> flux_{std::in_place_type<Clair>, boucle_};
  /// Bounded: chunk sizes, extensions and trailers count neither as headers nor as body.
  boost::beast::flat_buffer tampon_{entetesMax + lectureMax};
  std::optional<Analyseur> analyseur_;
  std::string requete_;
  std::size_t corpsMax_ = 0;
  std::size_t envoyes_ = 0;
  Horloge::time_point echeance_;
  bool entamee_ = false;
  bool connectee_ = false;
  bool recu_ = false;
  bool fini_ = false;
  std::optional<ReponseHTTP> reponse_;
};

ClientHTTP::ClientHTTP() = default;
ClientHTTP::~ClientHTTP() = default;

std::optional<ReponseHTTP> ClientHTTP::envoyer(const RequeteHTTP& requete, const BornesHTTP& bornes) {
  const auto debut = Horloge::now();
  for (const EnteteHTTP& entete : requete.entetes)
    if (porteControle(entete.valeur)) return std::nullopt;

  try {
    auto liaison = std::move(gardee_);
    if (!liaison || liaison->cible().url != requete.url) {
      auto cible = Cible::depuis(requete.url);
      if (!cible) return std::nullopt;
      if (!liaison || !liaison->cible().memeAdresse(*cible))
        liaison = std::make_unique<Liaison>(std::move(*cible));
      else
        liaison->changerDeChemin(std::move(*cible));
    }
    bool fini = false;
    const auto echanger = [&] {
      fini = liaison->echanger(requete, bornes.corpsMax, debut + bornes.attente);
      return liaison->prendreReponse();
    };
    std::optional<ReponseHTTP> reponse;
    const bool reprise = liaison->reutilisable();
    if (reprise) reponse = echanger();
    const bool perdue = reprise && fini && !reponse;
    if (perdue && !liaison->rienEnvoye() && liaison->rienRecu()) sansGarde_ = requete.url;
    // A kept connection that was already dead leaves the request whole in our hands.
    if (!reprise || (perdue && liaison->rienEnvoye())) {
      if (liaison->entamee()) liaison = std::make_unique<Liaison>(liaison->cible());
      reponse = echanger();
    }
    if (!fini)
      std::thread([orpheline = std::move(liaison), fin = debut + bornes.vie] {
        orpheline->poursuivre(fin);
      }).detach();
    else if (liaison->connectee() && sansGarde_ != requete.url)
      gardee_ = std::move(liaison);
    return reponse;
  } catch (const std::exception&) {  // no memory, descriptor or thread to be had
    return std::nullopt;
  }
}

}  // namespace tarnavelle
