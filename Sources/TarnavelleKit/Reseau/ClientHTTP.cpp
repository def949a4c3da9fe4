#include "Reseau/ClientHTTP.hpp"

#include <poll.h>

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http.hpp>
#include <climits>
#include <utility>

#include "BoucleInterne.hpp"
#include "EchangeInterne.hpp"

namespace tarnavelle {
namespace {

namespace http = boost::beast::http;
using namespace interne;
using Horloge = std::chrono::steady_clock;

using Morceau = boost::beast::string_view;

/// Newer versions of the parser tell trailers apart, and ask for this. Older ones have nothing to override.
class SansRemorque : public http::basic_parser<false> {
  virtual void on_trailer_field_impl(http::field, Morceau, Morceau, Erreur&) {}
};

/// Keeps of an answer its status and its body. The parser itself heeds the header fields that frame the body;
/// nobody reads the others.
class Analyseur : public SansRemorque {
 public:
  ReponseHTTP reponse;

 private:
  std::size_t ajouter(Morceau morceau) {
    reponse.corps.append(morceau.data(), morceau.size());
    return morceau.size();
  }

  void on_response_impl(int statut, Morceau, int, Erreur&) override { reponse.statut = statut; }
  void on_body_init_impl(const boost::optional<std::uint64_t>& longueur, Erreur&) override {
    reponse.corps.reserve(longueur.value_or(0));  // within the limit on bodies
  }
  std::size_t on_body_impl(Morceau morceau, Erreur&) override { return ajouter(morceau); }
  std::size_t on_chunk_body_impl(std::uint64_t, Morceau morceau, Erreur&) override { return ajouter(morceau); }

  void on_request_impl(http::verb, Morceau, Morceau, int, Erreur&) override {}
  void on_field_impl(http::field, Morceau, Morceau, Erreur&) override {}
  void on_header_impl(Erreur&) override {}
  void on_chunk_header_impl(std::uint64_t, Morceau, Erreur&) override {}
  void on_finish_impl(Erreur&) override {}
};

}  // namespace

/// Where a request goes. Two requests share a connection when they go to the same address.
struct ClientHTTP::Cible {
  std::string url;
  Adresse adresse;
};

/// One connection and the exchange under way on it. It owns its event loop, so that an exchange that
/// its caller no longer waits for can be carried to its end by a thread of its own.
class ClientHTTP::Liaison {
 public:
  explicit Liaison(Cible cible) : cible_(std::move(cible)), connexion_(boucle_, cible_.adresse.tls) {}

  const Cible& cible() const { return cible_; }

  /// Other requests to the same address.
  void changerDeChemin(Cible cible) { cible_ = std::move(cible); }

  /// Whether it has carried an exchange: a connection that failed is not tried again.
  bool entamee() const { return entamee_; }

  /// One exchange, until it is over or `echeance`. Returns whether it is over.
  bool echanger(const RequeteHTTP& requete, std::size_t corpsMax, Horloge::time_point echeance) {
    requete_ = octets(requete, cible_.adresse);
    entamee_ = true;
    corpsMax_ = corpsMax;
    envoyes_ = 0;
    recu_ = false;
    fini_ = false;
    echeance_ = echeance;
    boucle_.restart();
    try {
      connectee_ ? ecrire() : ouvrir();
      if (!fini_) boucle_.run_until(echeance);
    } catch (const std::exception&) {  // memory or descriptors ran out
      clore(ErreurReseau::autre);
    }
    return fini_;
  }

  /// Carries an exchange on that `echanger` left unfinished, at most until `fin`.
  static void poursuivre(std::shared_ptr<Liaison> liaison, Horloge::time_point fin) {
    asio::io_context& boucle = liaison->boucle_;
    if (Horloge::now() >= fin) liaison->clore(ErreurReseau::delaiDepasse);
    liaison->vie_.emplace(boucle, fin);
    liaison->vie_->async_wait([&boucle](Erreur annulee) {
      if (!annulee) boucle.stop();
    });
    lancerBoucle(boucle, std::move(liaison), [&boucle] { boucle.stop(); });
  }

  using Cause = decltype(EchecHTTP::cause);

  /// Why an exchange that is over has no reply.
  Cause cause() const { return cause_; }

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
    connexion_.next_layer().receive(asio::buffer(&octet, 1), tcp::socket::message_peek, erreur);
    return erreur == asio::error::would_block;
  }

 private:
  /// Ends the exchange without a reply.
  void clore(Cause cause) {
    cause_ = cause;
    connectee_ = false;
    finir();
  }

  void finir() {
    fini_ = true;
    requete_ = {};
    analyseur_.reset();
    if (vie_) vie_->cancel();
    if (!connectee_) connexion_.fermer();
  }

  void ouvrir() {
    connexion_.ouvrir(cible_.adresse, std::nullopt, [this](std::optional<ErreurReseau> erreur) {
      if (erreur) return clore(*erreur);
      connectee_ = true;
      ecrire();
    });
  }

  void ecrire() {
    if (!connexion_.chiffree()) {  // at once, without a turn of the event loop
      Erreur erreur;
      envoyes_ = connexion_.write_some(asio::buffer(requete_), erreur);
      if (erreur && erreur != asio::error::would_block) return clore(classer(erreur));
      if (envoyes_ == requete_.size()) {
        attendre();
        return lire();
      }
    }
    asio::async_write(connexion_, asio::buffer(requete_) + envoyes_, [this](Erreur erreur, std::size_t octets) {
      envoyes_ += octets;
      // A peer that refuses a large body may have said why before it closed.
      if (erreur && envoyes_ == 0) return clore(classer(erreur));
      lire();
    });
  }

  /// Reads what comes until the reply is whole. From `echeance_` on, the loop comes back for more.
  void lire() {
    while (true) {
      if (!analyseur_) preparer(analyseur_, corpsMax_);
      Erreur erreur;
      http::read_some(connexion_, tampon_, *analyseur_, erreur);
      recu_ = recu_ || analyseur_->got_some();
      if (erreur == asio::error::would_block)
        attendre();
      else if (erreur)
        return clore(malForme(erreur) ? Cause(EchecHTTP::Faute::reponse) : classer(erreur));
      if (analyseur_->is_done()) {
        const int statut = analyseur_->reponse.statut;
        if (statut < 100 || statut >= 200) return terminer();
        analyseur_.reset();  // an interim response precedes the final one
      }
      if (Horloge::now() >= echeance_) return reprendre(erreur == asio::error::would_block);
    }
  }

  /// Has the loop read on, once the peer has said something if it is `muet`.
  void reprendre(bool muet) {
    if (muet)
      connexion_.next_layer().async_wait(tcp::socket::wait_read, [this](Erreur) { lire(); });
    else
      asio::post(boucle_, [this] { lire(); });
  }

  /// Until the peer has said something, or `echeance_`. The caller waits here and now: one system call,
  /// where the event loop would need four.
  void attendre() {
    pollfd attendu{connexion_.next_layer().native_handle(), POLLIN, 0};
    const auto reste = std::chrono::ceil<std::chrono::milliseconds>(echeance_ - Horloge::now()).count();
    if (reste > 0) ::poll(&attendu, 1, static_cast<int>(std::min<std::int64_t>(reste, INT_MAX)));
  }

  void terminer() {
    connectee_ = analyseur_->keep_alive() && envoyes_ == requete_.size();
    reponse_ = std::move(analyseur_->reponse);
    finir();
  }

  Cible cible_;
  asio::io_context boucle_{1};
  Connexion connexion_;
  std::optional<asio::steady_timer> vie_;  // of an exchange that is carried on
  TamponReponse tampon_;
  std::optional<Analyseur> analyseur_;
  std::string requete_;
  std::size_t corpsMax_ = 0;
  std::size_t envoyes_ = 0;
  Horloge::time_point echeance_;
  bool entamee_ = false;
  bool connectee_ = false;
  bool recu_ = false;
  bool fini_ = false;
  Cause cause_;
  std::optional<ReponseHTTP> reponse_;
};

ClientHTTP::ClientHTTP() = default;
ClientHTTP::~ClientHTTP() = default;

std::optional<ReponseHTTP> ClientHTTP::envoyer(const RequeteHTTP& requete, const BornesHTTP& bornes) {
  const auto debut = Horloge::now();
  const auto renoncer = [this](EchecHTTP echec) {
    echec_ = echec;
    return std::nullopt;
  };
  echec_.reset();
  if (!envoyable(requete)) return renoncer({EchecHTTP::Faute::entete, false});

  try {
    auto liaison = std::move(gardee_);
    if (!liaison || liaison->cible().url != requete.url) {
      auto adresse = Adresse::depuis(requete.url, "http");
      if (!adresse) return renoncer({EchecHTTP::Faute::url, false});
      Cible cible{.url = requete.url, .adresse = std::move(*adresse)};
      if (!liaison || !liaison->cible().adresse.memeServeur(cible.adresse))
        liaison = std::make_unique<Liaison>(std::move(cible));
      else
        liaison->changerDeChemin(std::move(cible));
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
    // What goes on alone may yet be sent.
    const bool partie = !liaison->rienEnvoye() || (!fini && bornes.vie > bornes.attente);
    if (!reponse) echec_ = EchecHTTP{fini ? liaison->cause() : ErreurReseau::delaiDepasse, partie};
    if (!fini)
      Liaison::poursuivre(std::move(liaison), debut + bornes.vie);
    else if (liaison->connectee() && sansGarde_ != requete.url)
      gardee_ = std::move(liaison);
    return reponse;
  } catch (const std::exception&) {  // no memory, descriptor or thread to be had
    return renoncer({ErreurReseau::autre});
  }
}

}  // namespace tarnavelle
