// One connection and the exchange under way on it, on an event loop that is its user's: of its own, turned
// while its caller waits, or shared with others. And the connections that are kept from one exchange to the
// next.
//
// An exchange belongs to one thread at a time: the one that starts it, then the loop's. Private to this folder.
#pragma once

#include <boost/beast/http/basic_parser.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "EchangeInterne.hpp"
#include "Reseau/ClientHTTP.hpp"

namespace tarnavelle::interne {

/// What became of an exchange.
struct Issue {
  using Cause = decltype(EchecHTTP::cause);

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

class Voie {
 public:
  using Horloge = std::chrono::steady_clock;
  using Fini = std::function<void(Issue)>;

  Voie(asio::io_context& boucle, bool tls);
  /// One that outlives what it has under way, for a loop that serves others too.
  static std::shared_ptr<Voie> partagee(asio::io_context& boucle, bool tls);
  ~Voie();
  Voie(const Voie&) = delete;
  Voie& operator=(const Voie&) = delete;

  /// One exchange with the same server as the ones before. None follows one that failed. Until `patience`, or
  /// until the descriptor `reveil` has something to be read, its caller waits here and now; from then on, and
  /// once the loop has had to do with it, the loop of a shared one does. `fini` is called once, before this
  /// returns or from the loop: no more is touched of the exchange by the caller then. An exception is the
  /// loop's, or the caller's.
  void entamer(const RequeteHTTP& requete, const Adresse& adresse, std::size_t corpsMax,
               Horloge::time_point patience, Fini fini, int reveil = -1);

  /// Ends the exchange without a reply.
  void clore(Issue::Cause cause);

  /// Ends the exchange, if there is one under way, unheard.
  void abandonner();

  /// Who hears of the end from now on.
  void confier(Fini fini) { fini_ = std::move(fini); }

  bool entamee() const { return envoyes_ > 0; }

  /// Whether the last exchange left the connection open.
  bool ouverte() { return connexion_.next_layer().is_open(); }

  /// Whether another exchange may follow: the peer keeps the connection and has sent nothing since.
  bool reutilisable();

 private:
  class Analyseur;

  void finir(Issue issue, bool garder);
  void ouvrir(const Adresse& adresse);
  void ecrire();
  void lire();
  void reprendre(bool muet);
  void attendre();
  void terminer();
  template <class Action>
  void tenter(Action action);

  asio::io_context& boucle_;
  std::weak_ptr<Voie> soi_;  ///< when it is shared: a loop of its own must not hold it
  Connexion connexion_;
  TamponReponse tampon_;
  std::unique_ptr<Analyseur> analyseur_;
  std::string requete_;
  std::size_t corpsMax_ = 0;
  std::size_t envoyes_ = 0;
  Horloge::time_point patience_;
  int reveil_ = -1;
  bool muet_ = true;  ///< not a byte of a reply has come
  Fini fini_;
};

/// Connections kept for the address that was called last. One thread at a time.
template <class Pointeur>
class Reserve {
 public:
  /// Where the URL leads, null when it is unusable. What is kept for another server is let go.
  const Adresse* viser(const std::string& url) {
    if (cible_ && url_ == url) return &*cible_;
    auto adresse = Adresse::depuis(url, "http");
    if (!adresse) return nullptr;
    if (cible_ && !cible_->memeServeur(*adresse)) gardees_.clear();
    url_ = url;
    cible_ = std::move(adresse);
    return &*cible_;
  }

  /// The one given back last that may still serve, if any.
  Pointeur prendre() {
    while (!gardees_.empty()) {
      Pointeur voie = std::move(gardees_.back());
      gardees_.pop_back();
      if (voie->reutilisable()) return voie;
    }
    return {};
  }

  /// After an exchange with that URL that was answered.
  void rendre(Pointeur voie, const std::string& url) {
    if (voie->ouverte() && url == url_ && sansGarde_ != url && gardees_.size() < gardeesMax)
      gardees_.push_back(std::move(voie));
  }

  /// That peer closes without saying so, found out by a lost call: its connections are not kept.
  void nePlusGarder(const std::string& url) { sansGarde_ = url; }

 private:
  static constexpr std::size_t gardeesMax = 16;

  std::string url_;
  std::optional<Adresse> cible_;
  std::vector<Pointeur> gardees_;
  std::string sansGarde_;
};

}  // namespace tarnavelle::interne
