#include "Accueil/ServeurHTTP.hpp"

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <exception>
#include <list>
#include <string_view>
#include <thread>
#include <utility>

#include "Accueil/Jeton.hpp"
#include "Porte/PorteControle.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Plateau {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using asio::ip::tcp;
using Erreur = boost::system::error_code;

constexpr std::uint32_t entetesMax = 16 * 1024;  ///< bytes of a request's head
constexpr std::size_t lectureMax = 64 * 1024;    ///< bytes read ahead of what is understood
constexpr std::chrono::seconds adieu{2};         ///< for a refused peer to finish sending
constexpr std::chrono::seconds preuve{5};        ///< for a new peer to show a token, whatever the patience

constexpr std::string_view hotes[] = {"127.0.0.1", "localhost", "[::1]"};
constexpr std::int64_t patienceMax = 3600;  ///< seconds

constexpr std::string_view continuer = "HTTP/1.1 100 Continue\r\n\r\n";

/// The programs that the board starts inherit no connection: one would outlive the door, and keep its port.
void garderPourSoi(int descripteur) { ::fcntl(descripteur, F_SETFD, FD_CLOEXEC); }

/// What one request is answered with.
struct Reponse {
  http::status statut = http::status::ok;
  std::string corps;

  static Reponse de(const ReponsePorte& reponse, http::status statut = http::status::ok) {
    if (auto texte = EcritureJSON::compacte(reponse.json())) return {statut, std::move(*texte)};
    return refus(http::status::internal_server_error, "La réponse ne peut pas être écrite.");
  }
  static Reponse refus(http::status statut, std::string message) {
    return de(ReponsePorte::echec(std::move(message)), statut);
  }
};

/// One connection, served by one thread that owns its event loop. `arreter` alone may be called from
/// another thread.
class Connexion {
 public:
  Connexion(const ReglagesServeur& reglages, const Trousseau& trousseau,
            const ServeurHTTP::Traitement& traitement)
      : reglages_(reglages), trousseau_(trousseau), traitement_(traitement) {}

  tcp::socket& socket() { return flux_.socket(); }

  /// Serves requests until the peer leaves, stays silent or must be left.
  void servir() {
    Erreur ignoree;
    garderPourSoi(socket().native_handle());
    socket().set_option(tcp::no_delay(true), ignoree);
    while (servirUne()) {
    }
    socket().shutdown(tcp::socket::shutdown_send, ignoree);
    socket().close(ignoree);
  }

  void arreter() {
    asio::post(boucle_, [this] {
      arretee_ = true;
      minuterie_.cancel();
      flux_.close();
    });
  }

 private:
  using Analyseur = http::request_parser<http::string_body>;
  using Message = http::response<http::string_body>;

  /// Runs one asynchronous operation to its end, `patience` at most.
  template <class Lancer>
  Erreur mener(std::chrono::milliseconds patience, Lancer lancer) {
    if (arretee_) return asio::error::operation_aborted;
    Erreur resultat;
    flux_.expires_after(patience);
    lancer([&resultat](Erreur erreur, std::size_t) { resultat = erreur; });
    boucle_.restart();
    boucle_.run();
    return resultat;
  }

  /// Reads and answers one request; whether another may follow. Of a caller without a token, only the head is
  /// read.
  bool servirUne() {
    Analyseur analyseur;
    analyseur.header_limit(entetesMax);
    analyseur.body_limit(reglages_.corpsMax);
    if (const Erreur erreur = lireTete(analyseur)) return refuserIllisible(erreur);
    const auto& requete = analyseur.get();
    // A reply to HEAD must have no body: closing spares the peer the guess.
    const bool garder = requete.keep_alive() && requete.method() != http::verb::head;
    Appelant appelant;
    if (auto refus = refuser(requete, appelant)) {
      if (analyseur.is_done()) return repondre(std::move(*refus), requete.version(), garder);
      repondre(std::move(*refus), requete.version(), false);
      return laisserFinir();
    }
    prouve_ = true;
    if (const Erreur erreur = lireCorps(analyseur)) return refuserIllisible(erreur);
    const auto corps = LectureJSON::objet(requete.body());
    if (!corps)
      return repondre(Reponse::refus(http::status::bad_request, "Le corps doit être un objet JSON."),
                      requete.version(), garder);
    appelant.parti = [this] { return partie(); };
    Reponse reponse = Reponse::de(traitement_(*corps, appelant));
    const bool suite = repondreAvecPannes(std::move(reponse), requete.version(), garder);
    reglages_.repondu();
    return suite;
  }

  /// Whether the peer has closed its end; what it may have sent on is left to be read.
  bool partie() {
    char octet = 0;
    const auto lus = ::recv(socket().native_handle(), &octet, 1, MSG_PEEK | MSG_DONTWAIT);
    return lus == 0 || (lus < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR);
  }

  Erreur lireTete(Analyseur& analyseur) {
    const auto patience =
        prouve_ ? reglages_.patience : std::min<std::chrono::milliseconds>(preuve, reglages_.patience);
    return mener(patience,
                 [&](auto suite) { http::async_read_header(flux_, tampon_, analyseur, std::move(suite)); });
  }

  Erreur lireCorps(Analyseur& analyseur) {
    if (boost::beast::iequals(analyseur.get()[http::field::expect], "100-continue")) {
      const Erreur erreur = mener(reglages_.patience, [&](auto suite) {
        asio::async_write(flux_, asio::buffer(continuer), std::move(suite));
      });
      if (erreur) return erreur;
    }
    return mener(reglages_.patience,
                 [&](auto suite) { http::async_read(flux_, tampon_, analyseur, std::move(suite)); });
  }

  /// The refusals that a readable request's head decides, in this order: pages of a browser never get as far as
  /// the token. Fills in who calls.
  std::optional<Reponse> refuser(const Analyseur::value_type& requete, Appelant& appelant) const {
    if (!hoteConnu(requete))
      return Reponse::refus(http::status::misdirected_request, "Cette porte ne répond pas à ce nom d'hôte.");
    if (requete.find(http::field::origin) != requete.end())
      return Reponse::refus(http::status::forbidden, "Cette porte n'est pas pour les pages d'un navigateur.");
    const auto porteur = trousseau_.porteur(texteDe(requete[http::field::authorization]));
    if (!porteur) return Reponse::refus(http::status::unauthorized, "Jeton absent ou faux.");
    appelant.agent = porteur->agent;
    appelant.patience = patienceDe(texteDe(requete[entetePatience]));
    if (requete.target() != "/action")
      return Reponse::refus(http::status::not_found, "Rien à cette adresse : la porte est à /action.");
    if (requete.method() != http::verb::post)
      return Reponse::refus(http::status::method_not_allowed, "La porte n'entend que POST.");
    return std::nullopt;
  }

  static std::string_view texteDe(boost::beast::string_view texte) { return {texte.data(), texte.size()}; }

  /// Whether the one Host header names a loopback, and our port or one that leads to it.
  bool hoteConnu(const Analyseur::value_type& requete) const {
    if (requete.count(http::field::host) != 1) return false;
    const auto hote = texteDe(requete[http::field::host]);
    Erreur erreur;
    const auto notre = flux_.socket().local_endpoint(erreur).port();
    const auto deuxPoints = std::min(hote.rfind(':'), hote.size());
    const auto port = entierDecimal(hote.substr(std::min(deuxPoints + 1, hote.size())));
    const auto nom = hote.substr(0, deuxPoints);
    const bool admis = port && *port > 0 && *port <= 65535 &&
                       (*port == notre || reglages_.renvoie(static_cast<std::uint16_t>(*port)));
    return !erreur && admis && std::ranges::any_of(hotes, [&](std::string_view connu) {
      return boost::beast::iequals({nom.data(), nom.size()}, connu);
    });
  }

  static std::optional<std::chrono::seconds> patienceDe(std::string_view entete) {
    const auto secondes = entierDecimal(entete);
    if (!secondes || *secondes <= 0) return std::nullopt;
    return std::chrono::seconds(std::min(*secondes, patienceMax));
  }

  /// Answers what is not a readable request, when there is someone to answer. The connection ends here.
  bool refuserIllisible(Erreur erreur) {
    if (erreur == http::error::end_of_stream || erreur == http::error::partial_message ||
        erreur.category() != http::make_error_code(http::error::bad_method).category())
      return false;  // gone, silent for too long, or cut
    Reponse refus = Reponse::refus(http::status::bad_request, "Requête HTTP illisible.");
    if (erreur == http::error::body_limit)
      refus = Reponse::refus(http::status::payload_too_large,
                             "Corps trop grand : " + std::to_string(reglages_.corpsMax) + " octets au plus.");
    if (erreur == http::error::header_limit)
      refus = Reponse::refus(http::status::request_header_fields_too_large, "En-têtes trop longs.");
    repondre(std::move(refus), 11, false);
    return laisserFinir();
  }

  /// The connection ends: closing on a peer that is still sending would destroy the answer before it is read.
  bool laisserFinir() {
    Erreur fin;
    socket().shutdown(tcp::socket::shutdown_send, fin);
    std::array<char, 16 * 1024> rebut;
    const auto limite = std::chrono::steady_clock::now() + adieu;
    while (!fin && std::chrono::steady_clock::now() < limite)
      fin = mener(adieu, [&](auto suite) { flux_.async_read_some(asio::buffer(rebut), std::move(suite)); });
    return false;
  }

  static Message message(Reponse reponse, unsigned version, bool garder) {
    Message message(reponse.statut, version);
    message.set(http::field::content_type, "application/json");
    if (reponse.statut == http::status::unauthorized) message.set(http::field::www_authenticate, "Bearer");
    if (reponse.statut == http::status::method_not_allowed) message.set(http::field::allow, "POST");
    message.keep_alive(garder);
    message.content_length(reponse.corps.size());
    message.body() = std::move(reponse.corps);
    return message;
  }

  bool envoyer(const Message& message) {
    return !mener(reglages_.patience, [&](auto suite) { http::async_write(flux_, message, std::move(suite)); });
  }

  /// Whether the connection may go on.
  bool repondre(Reponse reponse, unsigned version, bool garder) {
    return envoyer(message(std::move(reponse), version, garder)) && garder;
  }

  bool repondreAvecPannes(Reponse reponse, unsigned version, bool garder) {
    const Pannes& pannes = reglages_.pannes;
    if (pannes.retard.count() > 0)
      mener(reglages_.patience, [&](auto suite) {
        minuterie_.expires_after(pannes.retard);
        minuterie_.async_wait([suite = std::move(suite)](Erreur erreur) mutable { suite(erreur, 0); });
      });
    if (pannes.statut) reponse.statut = static_cast<http::status>(*pannes.statut);
    if (pannes.corps) reponse.corps = *pannes.corps;
    if (!pannes.couper) return repondre(std::move(reponse), version, garder);
    Message moitie = message(std::move(reponse), version, garder);
    moitie.body().resize(moitie.body().size() / 2);
    envoyer(moitie);
    return false;
  }

  const ReglagesServeur& reglages_;
  const Trousseau& trousseau_;
  const ServeurHTTP::Traitement& traitement_;
  asio::io_context boucle_{1};
  boost::beast::tcp_stream flux_{boucle_};
  asio::steady_timer minuterie_{boucle_};
  /// Bounded: chunk sizes, extensions and trailers count neither as headers nor as body.
  boost::beast::flat_buffer tampon_{2 * entetesMax + lectureMax};
  bool prouve_ = false;  ///< a request came with a token
  bool arretee_ = false;
};

}  // namespace

/// Accepts connections and gives each its thread. All its state belongs to its own loop's thread.
class ServeurHTTP::Accueil {
 public:
  Accueil(ReglagesServeur reglages, Trousseau trousseau, Traitement traitement)
      : reglages_(std::move(reglages)), trousseau_(std::move(trousseau)), traitement_(std::move(traitement)) {}

  bool ecouter() {
    const tcp::endpoint adresse(asio::ip::address_v4::loopback(), reglages_.port);
    Erreur erreur;
    accepteur_.open(adresse.protocol(), erreur);
    if (!erreur) accepteur_.set_option(tcp::acceptor::reuse_address(true), erreur);
    if (!erreur) accepteur_.bind(adresse, erreur);
    if (!erreur) accepteur_.listen(tcp::acceptor::max_listen_connections, erreur);
    if (!erreur) port_ = accepteur_.local_endpoint(erreur).port();
    garderPourSoi(accepteur_.native_handle());
    return !erreur;
  }

  void servir() {
    accueillir();
    fil_ = std::thread([this] { boucle_.run(); });
  }

  ~Accueil() {
    if (!fil_.joinable()) return;
    asio::post(boucle_, [this] {
      arrete_ = true;
      Erreur ignoree;
      accepteur_.close(ignoree);
      pause_.cancel();
      for (Place& place : places_) place.connexion.arreter();
      reprendre();
    });
    fil_.join();
  }

  std::uint16_t port() const { return port_; }

 private:
  struct Place {
    Place(const ReglagesServeur& reglages, const Trousseau& trousseau, const Traitement& traitement)
        : connexion(reglages, trousseau, traitement) {}
    Connexion connexion;
    std::thread fil;
  };
  using Numero = std::list<Place>::iterator;

  /// Waits for the next connection, when there is room for it and none is awaited yet.
  void accueillir() {
    if (arrete_ || attendue_ || places_.size() >= reglages_.connexionsMax) return;
    try {
      const Numero place = places_.emplace(places_.end(), reglages_, trousseau_, traitement_);
      attendue_ = true;
      accepteur_.async_accept(place->connexion.socket(), [this, place](Erreur erreur) {
        attendue_ = false;
        if (!erreur && confier(place)) return accueillir();
        places_.erase(place);
        souffler();
      });
    } catch (const std::exception&) {
      souffler();
    }
  }

  /// Out of descriptors, threads or memory: waits for some to be given back rather than spin.
  void souffler() {
    if (arrete_) return reprendre();
    pause_.expires_after(std::chrono::milliseconds(100));
    pause_.async_wait([this](Erreur) { accueillir(); });
  }

  bool confier(Numero place) {
    try {
      place->fil = std::thread([this, place] {
        try {
          place->connexion.servir();
        } catch (const std::exception&) {  // memory ran out: this connection ends, the others go on
        }
        asio::post(boucle_, [this, place] {
          place->fil.join();
          places_.erase(place);
          reprendre();
        });
      });
      return true;
    } catch (const std::exception&) {
      return false;
    }
  }

  /// After a connection has ended: the next one, or the end of the loop.
  void reprendre() {
    accueillir();
    if (arrete_ && places_.empty()) retenue_.reset();
  }

  const ReglagesServeur reglages_;
  const Trousseau trousseau_;
  const Traitement traitement_;
  asio::io_context boucle_{1};
  asio::executor_work_guard<asio::io_context::executor_type> retenue_{boucle_.get_executor()};
  tcp::acceptor accepteur_{boucle_};
  asio::steady_timer pause_{boucle_};
  std::list<Place> places_;
  std::uint16_t port_ = 0;
  bool attendue_ = false;  ///< a place is ready for the next connection
  bool arrete_ = false;
  std::thread fil_;
};

ServeurHTTP::ServeurHTTP(std::unique_ptr<Accueil> accueil) : accueil_(std::move(accueil)) {}
ServeurHTTP::~ServeurHTTP() = default;

std::unique_ptr<ServeurHTTP> ServeurHTTP::ouvrir(ReglagesServeur reglages, Trousseau trousseau,
                                                 Traitement traitement) {
  auto accueil = std::make_unique<Accueil>(std::move(reglages), std::move(trousseau), std::move(traitement));
  if (!accueil->ecouter()) return nullptr;
  return std::unique_ptr<ServeurHTTP>(new ServeurHTTP(std::move(accueil)));
}

void ServeurHTTP::servir() { accueil_->servir(); }

std::uint16_t ServeurHTTP::port() const { return accueil_->port(); }

}  // namespace tarnavelle::Plateau
