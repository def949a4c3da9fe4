#include "Reseau/WebSocket.hpp"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/websocket.hpp>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "BoucleDetacheeInterne.hpp"
#include "CoucheInterne.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using namespace interne;
using Horloge = std::chrono::steady_clock;

constexpr std::size_t ecritureMax = 64 * 1024;   ///< bytes of a message written at a time
constexpr std::size_t refusMax = 500;            ///< characters shown of a server's words
constexpr std::size_t tamponGarde = 256 * 1024;  ///< bytes of reading buffer kept between messages

std::string raison(const Erreur& erreur) {
  if (erreur == websocket::error::message_too_big || erreur == websocket::error::buffer_overflow)
    return "le serveur a envoyé un message de plus de 16 Mio";
  if (erreur == websocket::error::closed) return "le serveur a fermé la connexion";
  if (erreur == websocket::condition::protocol_violation)
    return "le serveur ne respecte pas le protocole WebSocket";
  const ErreurReseau genre = classer(erreur);
  const bool pasHTTP = genre == ErreurReseau::autre &&
                       erreur.category() == make_error_code(beast::http::error::bad_version).category();
  if (pasHTTP || erreur == websocket::condition::handshake_failed) return "le serveur ne parle pas WebSocket";
  return std::string(description(genre));
}

}  // namespace

struct WebSocket::Etat {
  explicit Etat(ReglageWebSocket r, Adresse a) : reglage(std::move(r)), adresse(std::move(a)), fin(boucle) {}

  const ReglageWebSocket reglage;
  const Adresse adresse;

  /// As the owner sees it. From `fermee` on nothing is called any more.
  enum class Vie {
    neuve,
    demarree,
    fermee,  ///< by the owner
    finie,   ///< the connection is over
  };
  /// As the server sees it.
  enum class Phase {
    appel,    ///< a name look-up may be under way
    poignee,  ///< connected, and agreeing on the protocol
    ouverte,
    conge,  ///< the server has taken its leave
  };

  // Any thread, under the lock.
  std::mutex verrou;
  Vie vie = Vie::neuve;
  std::deque<std::string> file;
  std::size_t octets = 0;  ///< of the queue and of the message being written
  bool engorgee = false;   ///< a refused message has been told

  // The loop's thread only.
  asio::io_context boucle{1};
  RappelsCanal rappels;
  Phase phase = Phase::appel;
  std::optional<websocket::stream<Couche, false>> canal;
  beast::flat_buffer tampon;
  std::optional<std::string> enCours;  ///< the message being written
  Horloge::time_point echeance;
  asio::steady_timer fin;

  bool muet() {
    const std::lock_guard garde(verrou);
    return vie >= Vie::fermee;
  }

  void ouvrir() {
    if (muet()) return;
    echeance = Horloge::now() + reglage.ouverture;
    canal.emplace(boucle, adresse.tls, reglage.adieu);
    canal->next_layer().ouvrir(adresse, reglage.ouverture, [this](std::optional<ErreurReseau> erreur) {
      if (erreur) return chuter(std::string(description(*erreur)));
      phase = Phase::poignee;
      saluer();
    });
  }

  void delais(std::chrono::steady_clock::duration reponseMax) {
    canal->set_option(websocket::stream_base::timeout{reponseMax, reglage.silence, true});
  }

  void saluer() {
    delais(std::max<Horloge::duration>(echeance - Horloge::now(), std::chrono::milliseconds(1)));
    canal->set_option(websocket::stream_base::decorator([this](websocket::request_type& requete) {
      for (const EnteteHTTP& e : reglage.entetes) requete.set(e.nom, e.valeur);
    }));
    canal->read_message_max(messageMax);
    canal->write_buffer_bytes(ecritureMax);
    canal->auto_fragment(false);
    canal->text(true);
    canal->control_callback([this](websocket::frame_type genre, beast::string_view) {
      if (genre != websocket::frame_type::close) return;
      phase = Phase::conge;
      canal->next_layer().nePlusAttendre();
    });
    canal->async_handshake(adresse.entete, adresse.chemin, [this](Erreur erreur) {
      if (erreur) return essuyer(erreur);
      if (muet()) return finir();
      phase = Phase::ouverte;
      delais(reglage.adieu);
      canal->next_layer().finirLaPoignee();
      lire();
      ecrire();
    });
  }

  /// The handshake failed: the server refused, though its words may have been cut, or something else did.
  void essuyer(const Erreur& erreur) {
    const auto refus = canal->next_layer().refus();
    if (!refus) return chuter(raison(erreur));
    if (rappels.surRefus && !muet()) rappels.surRefus(refus->statut, sansSecret(refus->corps));
    chuter(
        citer("le serveur a refusé la connexion (HTTP " + std::to_string(refus->statut) + ")", refus->corps));
  }

  void lire() {
    canal->async_read(tampon, [this](Erreur erreur, std::size_t) {
      if (erreur) return perdre(erreur);
      const std::string_view vue(static_cast<const char*>(tampon.data().data()), tampon.size());
      if ((canal->got_text() || Texte::utf8Valide(vue)) && !muet()) rappels.surTexte(vue);
      tampon.consume(tampon.size());
      if (tampon.capacity() > tamponGarde) tampon = {};
      lire();
    });
  }

  void perdre(const Erreur& erreur) {
    const websocket::close_reason& dite = canal->reason();
    if (dite.code == websocket::close_code::none)
      return chuter(raison(phase == Phase::conge ? Erreur(websocket::error::closed) : erreur));
    chuter(citer("le serveur a fermé la connexion (" + std::to_string(dite.code) + ")",
                 {dite.reason.data(), dite.reason.size()}));
  }

  /// The server's words as text, without the secret.
  std::string sansSecret(std::string_view paroles) const {
    return Texte::sansSecret(Texte::reparer(paroles), reglage.secret);
  }

  /// The server's words, for the operator.
  std::string citer(std::string intitule, std::string_view paroles) const {
    const std::string lisible = sansSecret(paroles);
    const auto montre = Texte::tronquer(Texte::rogner(lisible), refusMax);
    return montre.empty() ? intitule : intitule.append(" : ").append(montre);
  }

  void ecrire() {
    if (phase < Phase::ouverte || enCours) return;
    {
      const std::lock_guard garde(verrou);
      if (file.empty()) return;
      enCours = std::move(file.front());
      file.pop_front();
    }
    canal->async_write(asio::buffer(*enCours), [this](Erreur erreur, std::size_t) {
      {
        const std::lock_guard garde(verrou);
        octets -= enCours->size();
        engorgee = engorgee && octets > 0;
      }
      enCours.reset();
      if (erreur == asio::error::operation_aborted) return;  // whoever ended the connection tells why
      if (erreur) return perdre(erreur);
      ecrire();
    });
  }

  void refuser() {
    if (!muet()) rappels.surErreurEnvoi("le serveur ne lit plus : envoi refusé");
  }

  void chuter(std::string cause) {
    const bool tue = muet();
    finir();
    if (!tue) rappels.surChute(std::move(cause));
  }

  /// The owner's end of the connection.
  void quitter() {
    if (phase < Phase::ouverte || !canal->is_open()) return finir();
    fin.expires_after(reglage.adieu);
    fin.async_wait([this](Erreur annulee) {
      if (!annulee) finir();
    });
    canal->async_close(websocket::close_code::going_away, [this](Erreur) { finir(); });
  }

  /// Ends the loop, whatever waits there: a close that crosses the server's own can leave Beast's read and
  /// close waiting for each other, which no timer of Beast's ends. Before there is a connection the loop
  /// ends by itself, once the name look-up has: whoever destroys a loop waits for that.
  void finir() {
    {
      const std::lock_guard garde(verrou);
      vie = Vie::finie;
      file.clear();
    }
    if (canal) canal->next_layer().fermer();
    if (phase > Phase::appel) boucle.stop();
  }
};

std::shared_ptr<WebSocket::Etat> WebSocket::preparer(ReglageWebSocket reglage) {
  for (const EnteteHTTP& entete : reglage.entetes)
    if (Texte::porteControle(entete.valeur)) return nullptr;
  auto adresse = Adresse::depuis(reglage.url, "ws");
  if (!adresse) return nullptr;
  return std::make_shared<Etat>(std::move(reglage), std::move(*adresse));
}

std::unique_ptr<WebSocket> WebSocket::creer(ReglageWebSocket reglage) {
  auto etat = preparer(std::move(reglage));
  return etat ? std::unique_ptr<WebSocket>(new WebSocket(std::move(etat))) : nullptr;
}

WebSocket::WebSocket(std::shared_ptr<Etat> etat) : etat_(std::move(etat)) {}

WebSocket::~WebSocket() { WebSocket::fermer(); }

void WebSocket::demarrer(RappelsCanal rappels) {
  {
    const std::lock_guard garde(etat_->verrou);
    if (etat_->vie != Etat::Vie::neuve) return;
    etat_->vie = Etat::Vie::demarree;
    etat_->rappels = std::move(rappels);
  }
  Etat* etat = etat_.get();
  asio::post(etat->boucle, [etat] { etat->ouvrir(); });
  const auto echec = [etat] { etat->chuter(std::string(description(ErreurReseau::autre))); };
  if (!lancerBoucle(etat->boucle, etat_, echec)) echec();
}

void WebSocket::envoyer(std::string texte) {
  Etat* etat = etat_.get();
  const std::lock_guard garde(etat->verrou);
  if (etat->vie >= Etat::Vie::fermee) return;
  if (etat->octets + texte.size() > enAttenteMax) {
    if (!std::exchange(etat->engorgee, true)) asio::post(etat->boucle, [etat] { etat->refuser(); });
    return;
  }
  etat->octets += texte.size();
  etat->file.push_back(std::move(texte));
  // Whoever takes a message from the queue comes back for the next.
  if (etat->file.size() == 1) asio::post(etat->boucle, [etat] { etat->ecrire(); });
}

void WebSocket::fermer() {
  Etat* etat = etat_.get();
  const std::lock_guard garde(etat->verrou);
  if (etat->vie >= Etat::Vie::fermee) return;
  etat->file.clear();
  const Etat::Vie avant = std::exchange(etat->vie, Etat::Vie::fermee);
  if (avant == Etat::Vie::demarree) asio::post(etat->boucle, [etat] { etat->quitter(); });
}

}  // namespace tarnavelle
