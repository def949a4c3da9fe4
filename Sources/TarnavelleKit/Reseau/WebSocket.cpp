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

#include "BoucleInterne.hpp"
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

  // Any thread, under the lock.
  std::mutex verrou;
  std::deque<std::string> file;
  std::size_t octets = 0;  ///< of the queue and of the message being written
  bool demarre = false;
  bool ferme = false;     ///< by the owner: nothing is called any more
  bool finie = false;     ///< the connection is over
  bool reveil = false;    ///< the loop has been told of the queue
  bool engorgee = false;  ///< a refused message has been told

  // The loop's thread only.
  asio::io_context boucle{1};
  RappelsCanal rappels;
  std::optional<websocket::stream<Couche, false>> flux;
  beast::flat_buffer tampon;
  std::string enCours;  ///< the message being written
  bool reliee = false;  ///< connected, whatever is spoken yet: no name look-up is under way
  bool ouverte = false;
  bool conge = false;  ///< the server has taken its leave
  bool ecriture = false;
  Horloge::time_point echeance;
  asio::steady_timer fin;

  bool muet() {
    const std::lock_guard garde(verrou);
    return ferme || finie;
  }

  void ouvrir() {
    if (muet()) return;
    echeance = Horloge::now() + reglage.ouverture;
    flux.emplace(boucle, adresse.tls, reglage.adieu);
    flux->next_layer().ouvrir(adresse, reglage.ouverture, [this](std::optional<ErreurReseau> erreur) {
      if (erreur) return chuter(std::string(description(*erreur)));
      reliee = true;
      saluer();
    });
  }

  void delais(std::chrono::steady_clock::duration reponseMax) {
    flux->set_option(websocket::stream_base::timeout{reponseMax, reglage.silence, true});
  }

  void saluer() {
    delais(std::max<Horloge::duration>(echeance - Horloge::now(), std::chrono::milliseconds(1)));
    flux->set_option(websocket::stream_base::decorator([this](websocket::request_type& requete) {
      for (const EnteteHTTP& e : reglage.entetes) requete.set(e.nom, e.valeur);
    }));
    flux->read_message_max(messageMax);
    flux->write_buffer_bytes(ecritureMax);
    flux->auto_fragment(false);
    flux->text(true);
    flux->control_callback([this](websocket::frame_type genre, beast::string_view) {
      if (genre != websocket::frame_type::close) return;
      conge = true;
      flux->next_layer().nePlusAttendre();
    });
    flux->async_handshake(adresse.entete, adresse.chemin, [this](Erreur erreur) {
      if (erreur) return essuyer(erreur);
      if (muet()) return finir();
      ouverte = true;
      delais(reglage.adieu);
      flux->next_layer().finirLaPoignee();
      lire();
      ecrire();
    });
  }

  /// The handshake failed: the server refused, though its words may have been cut, or something else did.
  void essuyer(const Erreur& erreur) {
    const auto refus = flux->next_layer().refus();
    if (!refus) return chuter(raison(erreur));
    if (rappels.surRefus && !muet()) rappels.surRefus(refus->statut, sansSecret(refus->corps));
    chuter(
        citer("le serveur a refusé la connexion (HTTP " + std::to_string(refus->statut) + ")", refus->corps));
  }

  void lire() {
    flux->async_read(tampon, [this](Erreur erreur, std::size_t) {
      if (erreur) return perdre(erreur);
      const std::string_view vue(static_cast<const char*>(tampon.data().data()), tampon.size());
      if ((flux->got_text() || Texte::utf8Valide(vue)) && !muet()) rappels.surTexte(vue);
      tampon.consume(tampon.size());
      if (tampon.capacity() > tamponGarde) tampon = {};
      lire();
    });
  }

  void perdre(const Erreur& erreur) {
    const websocket::close_reason& dite = flux->reason();
    if (dite.code == websocket::close_code::none)
      return chuter(raison(conge ? Erreur(websocket::error::closed) : erreur));
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
    if (!ouverte || ecriture) return;
    {
      const std::lock_guard garde(verrou);
      reveil = false;
      if (file.empty() || ferme || finie) return;
      enCours = std::move(file.front());
      file.pop_front();
    }
    ecriture = true;
    flux->async_write(asio::buffer(enCours), [this](Erreur erreur, std::size_t) {
      ecriture = false;
      {
        const std::lock_guard garde(verrou);
        octets -= enCours.size();
        engorgee = engorgee && octets > 0;
      }
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
    if (!ouverte || !flux->is_open()) return finir();
    fin.expires_after(reglage.adieu);
    fin.async_wait([this](Erreur annulee) {
      if (!annulee) finir();
    });
    flux->async_close(websocket::close_code::going_away, [this](Erreur) { finir(); });
  }

  /// Ends the loop, whatever waits there: a close that crosses the server's own can leave Beast's read and
  /// close waiting for each other, which no timer of Beast's ends. Before there is a connection the loop
  /// ends by itself, once the name look-up has: whoever destroys a loop waits for that.
  void finir() {
    {
      const std::lock_guard garde(verrou);
      finie = true;
      file.clear();
    }
    if (flux) flux->next_layer().fermer();
    if (reliee) boucle.stop();
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

WebSocket::~WebSocket() { fermer(); }

void WebSocket::demarrer(RappelsCanal rappels) {
  {
    const std::lock_guard garde(etat_->verrou);
    if (std::exchange(etat_->demarre, true) || etat_->ferme) return;
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
  if (etat->ferme || etat->finie) return;
  if (etat->octets + texte.size() > enAttenteMax) {
    if (!std::exchange(etat->engorgee, true)) asio::post(etat->boucle, [etat] { etat->refuser(); });
    return;
  }
  etat->octets += texte.size();
  etat->file.push_back(std::move(texte));
  if (!std::exchange(etat->reveil, true)) asio::post(etat->boucle, [etat] { etat->ecrire(); });
}

void WebSocket::fermer() {
  Etat* etat = etat_.get();
  const std::lock_guard garde(etat->verrou);
  if (std::exchange(etat->ferme, true)) return;
  etat->file.clear();
  if (etat->demarre) asio::post(etat->boucle, [etat] { etat->quitter(); });
}

}  // namespace tarnavelle
