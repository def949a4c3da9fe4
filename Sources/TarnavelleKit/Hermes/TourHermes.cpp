#include "Hermes/TourHermes.hpp"

#include "Hermes/FluxSSE.hpp"
#include "Liaison/LecteurLignesFlux.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {

IssueTour TourHermes::jouer(const RequeteGateway::Tour& tour, const SurEvenement& surEvenement) {
  auto issue = suivre(RequeteGateway::chat(tour), surEvenement);
  flux_.fermer();
  return issue;
}

IssueTour TourHermes::suivre(const RequeteHTTP& requete, const SurEvenement& surEvenement) {
  const auto ouverture = flux_.ouvrir(requete);
  if (!ouverture) return perdre(ouverture.raison());
  if (!estUnSucces(*ouverture)) return {IssueTour::echouee{{ErreurFluxGateway::http{*ouverture}}, {}}};

  std::optional<IssueTour> issue;
  const auto illisible = [&] {
    aPuAgir_ = true;  // who knows what it said
    issue = couper({ErreurFluxGateway::fluxTronque{}});
  };
  while (!issue)
    std::visit(Selon{[&](const LectureFlux::ligne& l) { issue = entendre(l.texte, surEvenement); },
                     [](const LectureFlux::attente&) {},
                     [&](const LectureFlux::tropLongue&) { illisible(); },  // it may never end
                     [&](const LectureFlux::fin&) { issue = finir(surEvenement); },
                     [&](const LectureFlux::illisible&) { illisible(); },
                     [&](const LectureFlux::perte& p) { issue = perdre(p.erreur); }},
               flux_.suivante().cas);
  return *issue;
}

std::optional<IssueTour> TourHermes::entendre(std::string_view ligne, const SurEvenement& surEvenement) {
  const bool premiere = !commencee_ && !Texte::rogner(ligne).empty();
  commencee_ = commencee_ || premiere;
  if (premiere && Texte::rogner(ligne).starts_with('{')) {  // no line of a stream of events begins so
    entiere_.emplace();
    aPuAgir_ = true;  // the gateway replies when all is done
  }
  if (entiere_) {
    entiere_->append(ligne).append("\n");
    if (entiere_->size() > LecteurLignesFlux::ligneMax) return couper({ErreurFluxGateway::fluxTronque{}});
    return std::nullopt;
  }
  return std::visit(
      Selon{
          [&](const FluxSSE::Ligne::charge& l) -> std::optional<IssueTour> {
            recevoir(LectureGateway::lire(l.texte), surEvenement);
            return std::nullopt;
          },
          [](const FluxSSE::Ligne::ignorer&) -> std::optional<IssueTour> { return std::nullopt; },
          [](const FluxSSE::Ligne::fin&) -> std::optional<IssueTour> { return IssueTour{IssueTour::finie{}}; }},
      FluxSSE::lire(ligne).cas);
}

bool TourHermes::recevoir(const LectureGateway& lecture, const SurEvenement& surEvenement) {
  aPuAgir_ = aPuAgir_ || lecture.aPuAgir;
  for (const auto& evenement : lecture.evenements) {
    noter(evenement);
    if (surEvenement) surEvenement(evenement);
  }
  return !lecture.evenements.empty();
}

IssueTour TourHermes::finir(const SurEvenement& surEvenement) {
  if (entiere_ && recevoir(LectureGateway::lire(*entiere_, LectureGateway::Forme::entiere), surEvenement))
    return {IssueTour::finie{}};
  return couper({ErreurFluxGateway::fluxTronque{}});
}

void TourHermes::noter(const EvenementGateway& evenement) {
  using E = EvenementGateway;
  std::visit(
      Selon{[&](const E::texte&) { vus_.aVuDuTexte = true; }, [&](const E::outil&) { vus_.aVuUnOutil = true; },
            [&](const E::outilFini&) { vus_.aVuUnOutil = true; }, [](const E::session&) {},
            [](const E::approbation&) {},
            [&](const E::approbationTranchee& e) {
              if (e.decision == DecisionApprobation::approuver) feuVert_ = true;
            },
            // The gateway has spoken: what it had begun is not to be begun again.
            [&](const E::erreur&) { aPuAgir_ = true; }, [](const E::rien&) {}},
      evenement.cas);
}

IssueTour TourHermes::couper(ErreurFluxGateway erreur) const {
  auto vus = vus_;
  vus.aVuUnFeuVert = feuVert_;
  vus.aVuUnOutil = vus.aVuUnOutil || aPuAgir_;
  return {IssueTour::echouee{std::move(erreur), RepliApresCoupure::decider(vus)}};
}

IssueTour TourHermes::perdre(ErreurReseau erreur) const {
  if (erreur == ErreurReseau::annulee) return {IssueTour::arretee{}};
  return couper({ErreurFluxGateway::transport{std::string(ErreurFluxGateway::phrase(erreur))}});
}

}  // namespace tarnavelle
