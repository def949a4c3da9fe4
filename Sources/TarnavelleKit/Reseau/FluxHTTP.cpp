#include "Reseau/FluxHTTP.hpp"

#include <algorithm>
#include <boost/asio/write.hpp>
#include <boost/beast/core/string.hpp>
#include <boost/beast/http.hpp>
#include <utility>
#include <vector>

#include "BoucleDetacheeInterne.hpp"
#include "EchangeInterne.hpp"
#include "Liaison/LecteurLignesFlux.hpp"

namespace tarnavelle {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
using namespace interne;
using Horloge = std::chrono::steady_clock;
using Echeance = std::optional<Horloge::time_point>;

template <class Entetes>
bool tousEgaux(const Entetes& entetes, http::field champ, std::string_view valeur) {
  const auto [debut, fin] = entetes.equal_range(champ);
  return std::all_of(debut, fin, [&](const auto& entete) {
    return entete.value().empty() || beast::iequals(entete.value(), {valeur.data(), valeur.size()});
  });
}

/// The connection, and when its last byte came.
class Source : public Connexion {
 public:
  using Connexion::Connexion;
  using Connexion::read_some;

  template <class Tampons>
  std::size_t read_some(const Tampons& tampons, Erreur& erreur) {
    const auto lus = Connexion::read_some(tampons, erreur);
    if (lus > 0) dernier = Horloge::now();
    return lus;
  }

  Horloge::time_point dernier;
};

}  // namespace

/// One request and what is answered, on an event loop of its own. The loop turns only within a call, on the
/// caller's thread, unless a name look-up must be left to end.
class FluxHTTP::Echange {
 public:
  Echange(const RequeteHTTP& requete, const Adresse& adresse, const std::atomic<bool>& interrompu)
      : interrompu_(interrompu),
        requete_(octets(requete, adresse, {{"Accept-Encoding", "identity"}})),
        silence_(requete.delai),
        connexion_(boucle_, adresse.tls),
        corps_(lectureMax) {}

  Resultat<int, ErreurReseau> ouvrir(const Adresse& adresse) {
    travail_ = Travail::ouverture;
    connexion_.ouvrir(adresse, std::min<std::chrono::milliseconds>(silence_, ouvertureMax),
                      [this](std::optional<ErreurReseau> erreur) {
                        travail_ = Travail::aucun;
                        if (erreur) perdre(*erreur);
                      });
    tourner({});  // the opening ends by itself in time
    if (interrompu_ || fin_) return Sinon{raison()};

    connexion_.dernier = Horloge::now();
    travail_ = Travail::envoi;
    asio::async_write(connexion_, asio::buffer(requete_), [this](Erreur erreur, std::size_t envoyes) {
      travail_ = Travail::aucun;
      // A peer that refuses a large body may have said why before it closed.
      if (erreur && envoyes == 0) perdre(classer(erreur));
    });
    tourner(connexion_.dernier + silence_);
    if (travail_ == Travail::envoi) perdre(ErreurReseau::delaiDepasse);
    if (interrompu_ || fin_) return Sinon{raison()};

    connexion_.dernier = Horloge::now();
    do {
      preparer(analyseur_.emplace(), boost::none);
      while (!analyseur_->is_header_done()) {
        if (interrompu_ || fin_) return Sinon{raison()};
        lire({});
      }
    } while (analyseur_->get().result_int() < 200);  // interim responses precede the final one
    const auto& reponse = analyseur_->get();
    if (!tousEgaux(reponse, http::field::content_encoding, "identity") ||
        !tousEgaux(reponse, http::field::transfer_encoding, "chunked")) {
      lignes_ = LecteurLignesFlux();  // no line is to be found in what came of it
      fin_ = {LectureFlux::illisible{}};
    }
    return static_cast<int>(reponse.result_int());
  }

  LectureFlux suivante(std::optional<std::chrono::milliseconds> attente) {
    Echeance limite;
    if (attente) limite = Horloge::now() + *attente;
    while (true) {
      if (interrompu_) return {LectureFlux::perte{ErreurReseau::annulee}};
      if (const auto ligne = lignes_.suivante()) return {LectureFlux::ligne{*ligne}};
      if (lignes_.tropLongue()) return {LectureFlux::tropLongue{}};
      if (fin_) return *fin_;
      if (analyseur_->is_done()) {
        if (const auto ligne = lignes_.derniere()) return {LectureFlux::ligne{*ligne}};
        return {LectureFlux::fin{}};
      }
      if (limite && Horloge::now() >= *limite) return {LectureFlux::attente{}};
      lire(limite);
    }
  }

  /// From any thread: ends the turn of the loop that is under way.
  void reveiller() { boucle_.stop(); }

  /// Ends everything. What cannot be ended keeps the exchange until it has ended by itself.
  static void abandonner(std::shared_ptr<Echange> echange) {
    if (!echange) return;
    echange->connexion_.fermer();
    echange->minuterie_.cancel();
    asio::io_context& boucle = echange->boucle_;
    boucle.restart();
    boucle.poll();
    if (!boucle.stopped()) lancerBoucle(boucle, std::move(echange), [] {});  // a name look-up is under way
  }

 private:
  /// What the loop has under way beside its alarm.
  enum class Travail {
    aucun,
    ouverture,
    envoi,
    veille,  ///< for bytes
  };

  /// Turns the loop until its work is done, the deadline or an interruption.
  void tourner(Echeance echeance) {
    while (travail_ != Travail::aucun) {
      boucle_.restart();
      if (interrompu_) return;  // asked for after the restart, or it could go unheard
      if (echeance && Horloge::now() >= *echeance) return;
      if (echeance) reveillerAu(*echeance);
      boucle_.run_one();
    }
  }

  /// Has the loop turn then at the latest: its own waits until some time wake up every second. An alarm set
  /// for earlier stays, so that not every line sets one.
  void reveillerAu(Horloge::time_point terme) {
    if (alarme_ && *alarme_ <= terme) return;
    alarme_ = terme;
    minuterie_.expires_at(terme);
    minuterie_.async_wait([this](Erreur erreur) {
      if (!erreur) alarme_.reset();
    });
  }

  void perdre(ErreurReseau erreur) { fin_ = {LectureFlux::perte{erreur}}; }

  /// Why there is no answer.
  ErreurReseau raison() const {
    if (interrompu_) return ErreurReseau::annulee;
    const auto* perte = std::get_if<LectureFlux::perte>(&fin_->cas);
    return perte ? perte->erreur : ErreurReseau::autre;
  }

  /// Takes what is there; when there is nothing, waits for something, `limite` or the end of the silence.
  void lire(Echeance limite) {
    const bool enteteLu = analyseur_->is_header_done();
    auto& corps = analyseur_->get().body();
    corps = {.data = corps_.data(), .size = corps_.size(), .more = true};
    Erreur erreur;
    http::read_some(connexion_, tampon_, *analyseur_, erreur);
    const std::size_t lus = corps_.size() - corps.size;
    lignes_.ajouter({corps_.data(), lus});
    if (erreur == asio::error::would_block) {
      // Something may have been read all the same, before what was not there.
      if (lus == 0 && analyseur_->is_header_done() == enteteLu) attendre(limite);
    } else if (malForme(erreur) && erreur != http::error::need_buffer) {
      fin_ = {LectureFlux::illisible{}};
    } else if (erreur && erreur != http::error::need_buffer) {
      perdre(classer(erreur));
    }
  }

  void attendre(Echeance limite) {
    if (std::exchange(travail_, Travail::veille) != Travail::veille)
      connexion_.next_layer().async_wait(tcp::socket::wait_read, [this](Erreur) { travail_ = Travail::aucun; });
    const auto silence = connexion_.dernier + silence_;
    tourner(limite ? std::min(*limite, silence) : silence);
    if (travail_ == Travail::veille && !interrompu_ && Horloge::now() >= silence)
      perdre(ErreurReseau::delaiDepasse);
  }

  const std::atomic<bool>& interrompu_;
  const std::string requete_;
  const std::chrono::milliseconds silence_;
  asio::io_context boucle_{1};
  asio::steady_timer minuterie_{boucle_};
  Echeance alarme_;  ///< when it rings
  Source connexion_;
  TamponReponse tampon_;
  std::optional<http::response_parser<http::buffer_body>> analyseur_;
  std::vector<char> corps_;
  LecteurLignesFlux lignes_;
  Travail travail_ = Travail::aucun;
  std::optional<LectureFlux> fin_;  ///< but for an end in order; told after the lines that came before it
};

FluxHTTP::FluxHTTP() = default;
FluxHTTP::~FluxHTTP() { fermer(); }

Resultat<int, ErreurReseau> FluxHTTP::ouvrir(const RequeteHTTP& requete) {
  fermer();
  if (interrompu_) return Sinon{ErreurReseau::annulee};
  const auto adresse = Adresse::depuis(requete.url, "http");
  if (!adresse || !envoyable(requete)) return Sinon{ErreurReseau::autre};
  try {
    auto echange = std::make_shared<Echange>(requete, *adresse, interrompu_);
    {
      const std::lock_guard garde(verrou_);
      if (interrompu_) return Sinon{ErreurReseau::annulee};
      echange_ = echange;
    }
    auto issue = echange->ouvrir(*adresse);
    if (!issue) fermer();
    return issue;
  } catch (const std::exception&) {  // memory or descriptors ran out
    fermer();
    return Sinon{ErreurReseau::autre};
  }
}

LectureFlux FluxHTTP::suivante(std::optional<std::chrono::milliseconds> attente) {
  if (!echange_) return {LectureFlux::perte{interrompu_ ? ErreurReseau::annulee : ErreurReseau::autre}};
  try {
    return echange_->suivante(attente);
  } catch (const std::exception&) {
    fermer();
    return {LectureFlux::perte{ErreurReseau::autre}};
  }
}

void FluxHTTP::fermer() {
  std::shared_ptr<Echange> echange;
  {
    const std::lock_guard garde(verrou_);
    echange = std::move(echange_);
  }
  Echange::abandonner(std::move(echange));
}

void FluxHTTP::pauser(std::chrono::milliseconds duree) {
  std::unique_lock garde(verrou_);
  reveil_.wait_for(garde, duree, [this] { return interrompu_.load(); });
}

void FluxHTTP::interrompre() {
  {
    const std::lock_guard garde(verrou_);
    interrompu_ = true;
    if (echange_) echange_->reveiller();
  }
  reveil_.notify_all();
}

}  // namespace tarnavelle
