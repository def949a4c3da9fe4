#include "Hermes/TourHermes.hpp"

#include "Hermes/FluxSSE.hpp"
#include "Socle/Selon.hpp"

namespace tarnavelle {

IssueTour TourHermes::jouer(const RequeteGateway::Tour& tour, const SurEvenement& surEvenement) {
  auto issue = suivre(RequeteGateway::chat(tour), surEvenement);
  flux_.fermer();
  return issue;
}

IssueTour TourHermes::suivre(const RequeteHTTP& requete, const SurEvenement& surEvenement) {
  const auto ouverture = flux_.ouvrir(requete);
  if (const auto* erreur = std::get_if<ErreurReseau>(&ouverture)) return perdre(*erreur);
  if (const int statut = std::get<int>(ouverture); !estUnSucces(statut))
    return {IssueTour::echouee{{ErreurFluxGateway::http{statut}}, {}}};

  std::optional<IssueTour> issue;
  const auto recevoir = [&](std::string_view charge) {
    const auto evenement = EvenementGateway::lire(charge);
    noter(evenement);
    if (surEvenement && !std::holds_alternative<EvenementGateway::rien>(evenement.cas)) surEvenement(evenement);
  };
  const auto entendre = [&](std::string_view ligne) {
    std::visit(Selon{[&](const FluxSSE::Ligne::charge& l) { recevoir(l.texte); },
                     [](const FluxSSE::Ligne::ignorer&) {},
                     [&](const FluxSSE::Ligne::fin&) { issue = {IssueTour::finie{}}; }},
               FluxSSE::lire(ligne).cas);
  };
  while (!issue)
    std::visit(
        Selon{[&](const LectureFlux::ligne& l) { entendre(l.texte); }, [](const LectureFlux::attente&) {},
              [&](const LectureFlux::fin&) { issue = couper({ErreurFluxGateway::fluxTronque{}}); },
              [&](const LectureFlux::tropLongue&) { issue = couper({ErreurFluxGateway::fluxTronque{}}); },
              [&](const LectureFlux::illisible&) { issue = couper({ErreurFluxGateway::fluxTronque{}}); },
              [&](const LectureFlux::perte& p) { issue = perdre(p.erreur); }},
        flux_.suivante().cas);
  return *issue;
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
            [](const E::erreur&) {}, [](const E::rien&) {}},
      evenement.cas);
}

IssueTour TourHermes::couper(ErreurFluxGateway erreur) const {
  auto vus = vus_;
  vus.aVuUnFeuVert = feuVert_;
  return {IssueTour::echouee{std::move(erreur), RepliApresCoupure::decider(vus)}};
}

IssueTour TourHermes::perdre(ErreurReseau erreur) const {
  if (erreur == ErreurReseau::annulee) return {IssueTour::arretee{}};
  return couper({ErreurFluxGateway::transport{std::string(ErreurFluxGateway::phrase(erreur))}});
}

}  // namespace tarnavelle
