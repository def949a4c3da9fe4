#include "Vues/Apercu.hpp"

#include <algorithm>

#include "Verbes/Constats.hpp"
#include "Verbes/Urgence.hpp"

namespace tarnavelle::Plateau {

Garde<Apercu> Apercu::lire(const Registre& registre, Veille& veille) {
  Apercu apercu;
  auto scenes = registre.scenes();
  if (!scenes) return Sinon{scenes.raison()};
  const auto agents = registre.agents();
  if (!agents) return Sinon{agents.raison()};
  const auto fenetres = registre.fenetres();
  if (!fenetres) return Sinon{fenetres.raison()};
  auto postits = registre.postits();
  if (!postits) return Sinon{postits.raison()};
  auto closes = registre.tachesCloses();
  if (!closes) return Sinon{closes.raison()};
  const auto courrier = registre.courrier();
  if (!courrier) return Sinon{courrier.raison()};
  apercu.scenes = std::move(*scenes);
  apercu.postits = std::move(*postits);
  apercu.closes = std::move(*closes);
  for (const auto& [destinataire, nombre] : *courrier) apercu.messages += nombre;
  const auto messagesDe = [&](const std::string& id) {
    const auto siens = courrier->find(id);
    return siens == courrier->end() ? std::size_t{0} : siens->second;
  };
  const auto avis = registre.avisRecus();
  if (!avis) return Sinon{avis.raison()};
  for (const FicheAvis& a : *avis) {
    if (a.lu) continue;
    ++apercu.avis;
    apercu.dernierAvis = a.titre.empty() ? a.texte : a.titre;
  }
  for (const FicheAgent& a : *agents) {
    const Situation situation = constater(a, veille).situation;
    apercu.elements.push_back({.id = a.id,
                               .nom = a.nom,
                               .programme = a.programme,
                               .scene = a.scene,
                               .ouvert = a.ouvert,
                               .etat = situation.etat,
                               .depuis = situation.depuis,
                               .besoin = situation.etat == Etat::besoin ? situation.preuve.element : "",
                               .messages = messagesDe(a.id),
                               .ouverture = a.ouverture});
  }
  for (const FicheFenetre& f : *fenetres)
    if (!f.session.empty())
      apercu.elements.push_back({.id = f.id,
                                 .nom = f.nom,
                                 .programme = {},
                                 .scene = f.scene,
                                 .etat = etatDe(f),
                                 .besoin = {},
                                 .ouverture = f.ouverture});
  std::ranges::stable_sort(apercu.elements, {}, &Element::ouverture);
  return apercu;
}

const FicheScene* Apercu::scene(std::int64_t numero) const {
  const auto trouvee = std::ranges::find(scenes, numero, &FicheScene::numero);
  return trouvee == scenes.end() ? nullptr : &*trouvee;
}

const FicheScene* Apercu::visible() const {
  const auto trouvee = std::ranges::find(scenes, true, &FicheScene::visible);
  return trouvee == scenes.end() ? nullptr : &*trouvee;
}

std::vector<const Apercu::Element*> Apercu::agentsParUrgence() const {
  std::vector<const Element*> agents;
  for (const Element& e : elements)
    if (e.estAgent()) agents.push_back(&e);
  std::ranges::stable_sort(agents, {}, [](const Element* e) { return urgence(e->etat); });
  return agents;
}

std::vector<const FichePostIt*> Apercu::postitsDe(std::int64_t scene) const {
  std::vector<const FichePostIt*> siens;
  for (const FichePostIt& p : postits)
    if (p.scene == scene) siens.push_back(&p);
  return siens;
}

}  // namespace tarnavelle::Plateau
