#include "Reseau/ClientHTTP.hpp"

#include <poll.h>

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http.hpp>
#include <climits>
#include <utility>

#include "BoucleDetacheeInterne.hpp"
#include "EchangeInterne.hpp"
#include "Socle/Selon.hpp"

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

using Cause = decltype(EchecHTTP::cause);

/// What became of an exchange.
struct Issue {
  struct repondu {
    ReponseHTTP reponse;
  };
  struct enCours {
    bool entamee;  ///< bytes of the request have left
  };
  /// It failed before a byte of the request had left.
  struct rienParti {
    Cause cause;
  };
  struct perdu {
    Cause cause;
    bool muet;  ///< not a byte of a reply had come
  };
  std::variant<repondu, enCours, rienParti, perdu> cas;
};

}  // namespace

/// Where a request goes.
struct ClientHTTP::Cible {
  std::string url;
  Adresse adresse;
};

/// One connection and the exchange under way on it. It owns its event loop, so that an exchange that
/// its caller no longer waits for can be carried to its end by a thread of its own.
class ClientHTTP::Voie {
 public:
  explicit Voie(bool tls) : connexion_(boucle_, tls) {}

  /// One exchange with the same server as the ones before, until it is over or `echeance`. None follows one
  /// that failed.
  Issue echanger(const RequeteHTTP& requete, const Adresse& adresse, std::size_t corpsMax,
                 Horloge::time_point echeance) {
    requete_ = octets(requete, adresse);
    corpsMax_ = corpsMax;
    envoyes_ = 0;
    muet_ = true;
    issue_.reset();
    echeance_ = echeance;
    boucle_.restart();
    try {
      ouverte() ? ecrire() : ouvrir(adresse);
      if (!issue_) boucle_.run_until(echeance);
    } catch (const std::exception&) {  // memory or descriptors ran out
      clore(ErreurReseau::autre);
    }
    return issue_ ? std::move(*issue_) : Issue{Issue::enCours{.entamee = envoyes_ > 0}};
  }

  /// Carries an exchange on that `echanger` left unfinished, at most until `fin`.
  static void poursuivre(std::shared_ptr<Voie> voie, Horloge::time_point fin) {
    asio::io_context& boucle = voie->boucle_;
    if (Horloge::now() >= fin) voie->clore(ErreurReseau::delaiDepasse);
    voie->vie_.emplace(boucle, fin);
    voie->vie_->async_wait([&boucle](Erreur annulee) {
      if (!annulee) boucle.stop();
    });
    lancerBoucle(boucle, std::move(voie), [&boucle] { boucle.stop(); });
  }

  /// Whether the last exchange left the connection open.
  bool ouverte() { return connexion_.next_layer().is_open(); }

  /// Whether another exchange may follow: the peer keeps the connection and has sent nothing since.
  bool reutilisable() {
    if (!ouverte() || tampon_.size() != 0) return false;
    Erreur erreur;
    char octet;
    connexion_.next_layer().receive(asio::buffer(&octet, 1), tcp::socket::message_peek, erreur);
    return erreur == asio::error::would_block;
  }

 private:
  /// Ends the exchange without a reply.
  void clore(Cause cause) {
    if (envoyes_ == 0)
      finir({Issue::rienParti{cause}}, false);
    else
      finir({Issue::perdu{.cause = cause, .muet = muet_}}, false);
  }

  void finir(Issue issue, bool garder) {
    issue_ = std::move(issue);
    requete_ = {};
    analyseur_.reset();
    if (vie_) vie_->cancel();
    if (!garder) connexion_.fermer();
  }

  void ouvrir(const Adresse& adresse) {
    connexion_.ouvrir(adresse, std::nullopt, [this](std::optional<ErreurReseau> erreur) {
      if (erreur) return clore(*erreur);
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
      muet_ = muet_ && !analyseur_->got_some();
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
    const bool garder = analyseur_->keep_alive() && envoyes_ == requete_.size();
    finir({Issue::repondu{std::move(analyseur_->reponse)}}, garder);
  }

  asio::io_context boucle_{1};
  Connexion connexion_;
  std::optional<asio::steady_timer> vie_;  // of an exchange that is carried on
  TamponReponse tampon_;
  std::optional<Analyseur> analyseur_;
  std::string requete_;
  std::size_t corpsMax_ = 0;
  std::size_t envoyes_ = 0;
  Horloge::time_point echeance_;
  bool muet_ = true;  ///< not a byte of a reply has come
  std::optional<Issue> issue_;
};

ClientHTTP::ClientHTTP() = default;
ClientHTTP::~ClientHTTP() = default;

Resultat<ReponseHTTP, EchecHTTP> ClientHTTP::envoyer(const RequeteHTTP& requete, const BornesHTTP& bornes) {
  const auto debut = Horloge::now();
  if (!envoyable(requete)) return Sinon{EchecHTTP{EchecHTTP::Faute::entete, false}};

  try {
    auto voie = std::move(gardee_);
    if (!cible_ || cible_->url != requete.url) {
      auto adresse = Adresse::depuis(requete.url, "http");
      if (!adresse) return Sinon{EchecHTTP{EchecHTTP::Faute::url, false}};
      if (voie && !cible_->adresse.memeServeur(*adresse)) voie.reset();
      cible_ = std::make_unique<Cible>(Cible{.url = requete.url, .adresse = std::move(*adresse)});
    }
    const Adresse& adresse = cible_->adresse;
    const auto echanger = [&] {
      if (!voie) voie = std::make_unique<Voie>(adresse.tls);
      return voie->echanger(requete, adresse, bornes.corpsMax, debut + bornes.attente);
    };
    bool reprise = voie && voie->reutilisable();
    if (!reprise) voie.reset();
    Issue issue = echanger();
    // A kept connection that was already dead leaves the request whole in our hands.
    if (reprise && std::holds_alternative<Issue::rienParti>(issue.cas)) {
      reprise = false;
      voie.reset();
      issue = echanger();
    }
    using Rendu = Resultat<ReponseHTTP, EchecHTTP>;
    return std::visit(Selon{
                          [&](Issue::repondu& r) {
                            if (voie->ouverte() && sansGarde_ != requete.url) gardee_ = std::move(voie);
                            return Rendu(std::move(r.reponse));
                          },
                          [&](Issue::enCours& e) {
                            // What goes on alone may yet be sent.
                            const bool partie = e.entamee || bornes.vie > bornes.attente;
                            Voie::poursuivre(std::move(voie), debut + bornes.vie);
                            return Rendu(Sinon{EchecHTTP{ErreurReseau::delaiDepasse, partie}});
                          },
                          [&](Issue::rienParti& r) {
                            return Rendu(Sinon{EchecHTTP{r.cause, false}});
                          },
                          [&](Issue::perdu& p) {
                            if (reprise && p.muet) sansGarde_ = requete.url;
                            return Rendu(Sinon{EchecHTTP{p.cause, true}});
                          },
                      },
                      issue.cas);
  } catch (const std::exception&) {  // no memory, descriptor or thread to be had
    return Sinon{EchecHTTP{ErreurReseau::autre}};
  }
}

}  // namespace tarnavelle
