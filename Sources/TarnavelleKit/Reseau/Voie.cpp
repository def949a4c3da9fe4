#include <poll.h>

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http.hpp>
#include <climits>

#include "VoieInterne.hpp"

namespace tarnavelle::interne {
namespace {

namespace http = boost::beast::http;
using Morceau = boost::beast::string_view;

/// Newer versions of the parser tell trailers apart, and ask for this. Older ones have nothing to override.
class SansRemorque : public http::basic_parser<false> {
  virtual void on_trailer_field_impl(http::field, Morceau, Morceau, Erreur&) {}
};

}  // namespace

/// Keeps of an answer its status and its body. The parser itself heeds the header fields that frame the body;
/// nobody reads the others.
class Voie::Analyseur : public SansRemorque {
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

Voie::Voie(asio::io_context& boucle, bool tls) : boucle_(boucle), connexion_(boucle, tls) {}
Voie::~Voie() = default;

std::shared_ptr<Voie> Voie::partagee(asio::io_context& boucle, bool tls) {
  auto voie = std::make_shared<Voie>(boucle, tls);
  voie->soi_ = voie;
  return voie;
}

void Voie::entamer(const RequeteHTTP& requete, const Adresse& adresse, std::size_t corpsMax,
                   Horloge::time_point patience, Fini fini, int reveil) {
  requete_ = octets(requete, adresse);
  corpsMax_ = corpsMax;
  envoyes_ = 0;
  muet_ = true;
  patience_ = patience;
  reveil_ = reveil;
  fini_ = std::move(fini);
  ouverte() ? ecrire() : ouvrir(adresse);
}

void Voie::clore(Issue::Cause cause) {
  if (envoyes_ == 0)
    finir({Issue::rienParti{cause}}, false);
  else
    finir({Issue::perdu{.cause = cause, .muet = muet_}}, false);
}

void Voie::abandonner() {
  fini_ = nullptr;
  connexion_.fermer();
}

bool Voie::reutilisable() {
  if (!ouverte() || tampon_.size() != 0) return false;
  Erreur erreur;
  char octet;
  connexion_.next_layer().receive(asio::buffer(&octet, 1), tcp::socket::message_peek, erreur);
  return erreur == asio::error::would_block;
}

void Voie::finir(Issue issue, bool garder) {
  const Fini fini = std::exchange(fini_, nullptr);
  requete_ = {};
  analyseur_.reset();
  if (!garder) connexion_.fermer();
  if (fini) fini(std::move(issue));
}

/// A turn of the loop: what is thrown ends this exchange, and no other.
template <class Action>
void Voie::tenter(Action action) {
  if (!soi_.expired()) patience_ = {};  // the loop has others to serve
  try {
    action();
  } catch (const std::exception&) {  // memory or descriptors ran out
    clore(ErreurReseau::autre);
  }
}

void Voie::ouvrir(const Adresse& adresse) {
  const auto tenue = soi_.lock();
  connexion_.ouvrir(
      adresse, std::nullopt,
      [this](std::optional<ErreurReseau> erreur) {
        if (erreur) return clore(*erreur);
        tenter([this] { ecrire(); });
      },
      tenue);
}

void Voie::ecrire() {
  if (!connexion_.chiffree()) {  // at once, without a turn of the event loop
    Erreur erreur;
    envoyes_ = connexion_.write_some(asio::buffer(requete_), erreur);
    if (erreur && erreur != asio::error::would_block) return clore(classer(erreur));
    if (envoyes_ == requete_.size()) {
      attendre();
      return lire();
    }
  }
  asio::async_write(connexion_, asio::buffer(requete_) + envoyes_,
                    [this, tenue = soi_.lock()](Erreur erreur, std::size_t octets) {
                      envoyes_ += octets;
                      // A peer that refuses a large body may have said why before it closed.
                      if (erreur && envoyes_ == 0) return clore(classer(erreur));
                      tenter([this] { lire(); });
                    });
}

/// Reads what comes until the reply is whole. From `patience_` on, the loop comes back for more.
void Voie::lire() {
  while (true) {
    if (!analyseur_) {
      analyseur_ = std::make_unique<Analyseur>();
      preparer(*analyseur_, corpsMax_);
    }
    Erreur erreur;
    http::read_some(connexion_, tampon_, *analyseur_, erreur);
    muet_ = muet_ && !analyseur_->got_some();
    if (erreur == asio::error::would_block)
      attendre();
    else if (erreur)
      return clore(malForme(erreur) ? Issue::Cause(EchecHTTP::Faute::reponse) : classer(erreur));
    if (analyseur_->is_done()) {
      const int statut = analyseur_->reponse.statut;
      if (statut < 100 || statut >= 200) return terminer();
      analyseur_.reset();  // an interim response precedes the final one
    }
    if (Horloge::now() >= patience_) return reprendre(erreur == asio::error::would_block);
  }
}

/// Has the loop read on, once the peer has said something if it is `muet`.
void Voie::reprendre(bool muet) {
  const auto suite = [this, tenue = soi_.lock()] { tenter([this] { lire(); }); };
  if (muet)
    connexion_.next_layer().async_wait(tcp::socket::wait_read, [suite](Erreur) { suite(); });
  else
    asio::post(boucle_, suite);
}

/// Until the peer has said something, `patience_` or `reveil_`. The caller waits here and now: one system call,
/// where the event loop would need four.
void Voie::attendre() {
  pollfd attendus[] = {{connexion_.next_layer().native_handle(), POLLIN, 0}, {reveil_, POLLIN, 0}};
  const auto reste = std::chrono::ceil<std::chrono::milliseconds>(patience_ - Horloge::now()).count();
  if (reste <= 0) return;
  ::poll(attendus, reveil_ < 0 ? 1 : 2, static_cast<int>(std::min<std::int64_t>(reste, INT_MAX)));
  if (attendus[1].revents != 0) patience_ = {};
}

void Voie::terminer() {
  const bool garder = analyseur_->keep_alive() && envoyes_ == requete_.size();
  finir({Issue::repondu{std::move(analyseur_->reponse)}}, garder);
}

}  // namespace tarnavelle::interne
