#include "Reseau/ClientHTTP.hpp"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <utility>

#include "BoucleDetacheeInterne.hpp"
#include "Socle/Selon.hpp"
#include "VoieInterne.hpp"

namespace tarnavelle {
namespace {

using namespace interne;
using Horloge = Voie::Horloge;

struct Boucle {
  asio::io_context boucle{1};
};

/// It owns its event loop, so that an exchange that its caller no longer waits for can be carried to its end by
/// a thread of its own.
class VoieSeule : private Boucle, public Voie {
 public:
  explicit VoieSeule(bool tls) : Voie(boucle, tls) {}

  /// One exchange, until it is over or `echeance`.
  Issue echanger(const RequeteHTTP& requete, const Adresse& adresse, std::size_t corpsMax,
                 Horloge::time_point echeance) {
    std::optional<Issue> issue;
    const auto finir = [&issue](Issue rendue) { issue = std::move(rendue); };
    boucle.restart();
    try {
      entamer(requete, adresse, corpsMax, echeance, finir);
      if (!issue) boucle.run_until(echeance);
    } catch (const std::exception&) {  // memory or descriptors ran out
      clore(ErreurReseau::autre);
    }
    confier(nullptr);
    return issue ? std::move(*issue) : Issue{Issue::enCours{.entamee = entamee()}};
  }

  /// Carries an exchange on that `echanger` left unfinished, at most until `fin`.
  static void poursuivre(std::shared_ptr<VoieSeule> voie, Horloge::time_point fin) {
    asio::io_context& boucle = voie->boucle;
    auto& vie = voie->vie_.emplace(boucle, fin);
    vie.async_wait([&boucle](Erreur annulee) {
      if (!annulee) boucle.stop();
    });
    voie->confier([&vie](const Issue&) { vie.cancel(); });
    if (Horloge::now() >= fin) voie->clore(ErreurReseau::delaiDepasse);
    lancerBoucle(boucle, std::move(voie), [&boucle] { boucle.stop(); });
  }

 private:
  std::optional<asio::steady_timer> vie_;  // of an exchange that is carried on
};

}  // namespace

class ClientHTTP::Garde : public Reserve<std::unique_ptr<VoieSeule>> {};

ClientHTTP::ClientHTTP() : garde_(std::make_unique<Garde>()) {}
ClientHTTP::~ClientHTTP() = default;

Resultat<ReponseHTTP, EchecHTTP> ClientHTTP::envoyer(const RequeteHTTP& requete, const BornesHTTP& bornes) {
  const auto debut = Horloge::now();
  if (!envoyable(requete)) return Sinon{EchecHTTP{EchecHTTP::Faute::entete, false}};

  try {
    const Adresse* adresse = garde_->viser(requete.url);
    if (!adresse) return Sinon{EchecHTTP{EchecHTTP::Faute::url, false}};
    auto voie = garde_->prendre();
    const auto echanger = [&] {
      if (!voie) voie = std::make_unique<VoieSeule>(adresse->tls);
      return voie->echanger(requete, *adresse, bornes.corpsMax, debut + bornes.attente);
    };
    bool reprise = voie != nullptr;
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
                            garde_->rendre(std::move(voie), requete.url);
                            return Rendu(std::move(r.reponse));
                          },
                          [&](Issue::enCours& e) {
                            // What goes on alone may yet be sent.
                            const bool partie = e.entamee || bornes.vie > bornes.attente;
                            VoieSeule::poursuivre(std::move(voie), debut + bornes.vie);
                            return Rendu(Sinon{EchecHTTP{ErreurReseau::delaiDepasse, partie}});
                          },
                          [&](Issue::rienParti& r) {
                            return Rendu(Sinon{EchecHTTP{r.cause, false}});
                          },
                          [&](Issue::perdu& p) {
                            if (reprise && p.muet) garde_->nePlusGarder(requete.url);
                            return Rendu(Sinon{EchecHTTP{p.cause, true}});
                          },
                      },
                      issue.cas);
  } catch (const std::exception&) {  // no memory, descriptor or thread to be had
    return Sinon{EchecHTTP{ErreurReseau::autre}};
  }
}

}  // namespace tarnavelle
