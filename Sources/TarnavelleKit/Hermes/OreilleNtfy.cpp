#include "Hermes/OreilleNtfy.hpp"

#include <utility>

#include "Hermes/FluxSSE.hpp"
#include "Socle/Selon.hpp"

namespace tarnavelle {
namespace {

std::chrono::milliseconds millisecondes(AbonnementNtfy::Secondes duree) {
  return std::chrono::ceil<std::chrono::milliseconds>(duree);
}

AbonnementNtfy::Secondes depuis1970(Date::Instant instant) { return instant.time_since_epoch(); }

EchecNtfy echecDeTransport(ErreurReseau erreur) {
  return {EchecNtfy::transport{std::string(AbonnementNtfy::phrase(erreur))}};
}

}  // namespace

OreilleNtfy::OreilleNtfy(FluxLignes& flux, Horloge horloge, Rappels rappels)
    : flux_(flux), horloge_(std::move(horloge)), rappels_(std::move(rappels)) {}

OreilleNtfy::Fin OreilleNtfy::ecouter(const ReglageNtfy& reglage, const Cockpit& cockpit,
                                      const Souvenir& souvenir) {
  if (!AbonnementNtfy::doitSAbonner(reglage, cockpit.headless, cockpit.demo)) return {Fin::fermee{}};
  tentative_ = 0;
  for (const std::string& id : souvenir.ids) journal_.neuf(id);
  acquis_.connaitre(horloge_() - souvenir.age.value_or(Secondes(0)));
  bool rattrapage = souvenir.age.has_value();
  bool dejaRepris = false;  // the last request was refused with 400, this one is its retry
  while (true) {
    if (flux_.interrompu()) return {Fin::arretee{}};
    const auto manque = acquis_.ouvrir(horloge_(), rattrapage);
    const auto requete = AbonnementNtfy::requete(reglage, AbonnementNtfy::depuis(manque));
    if (!requete) return {Fin::fermee{}};
    const auto issue = suivre(*requete, reglage.topicNet());
    flux_.fermer();
    if (std::holds_alternative<arret>(issue)) return {Fin::arretee{}};
    const auto* echec = std::get_if<EchecNtfy>(&issue);
    if (!echec) {
      rattrapage = true;
      dejaRepris = false;
      continue;
    }
    const auto verdict = AbonnementNtfy::verdict(*echec, tentative_, dejaRepris);
    if (const auto* abandon = std::get_if<AbonnementNtfy::Verdict::abandonner>(&verdict.cas))
      return {Fin::abandonnee{abandon->message}};
    const auto& reprise = std::get<AbonnementNtfy::Verdict::reprendre>(verdict.cas);
    dejaRepris = echec->cas == decltype(echec->cas)(EchecNtfy::http{400});
    ++tentative_;
    rattrapage = reprise.avecRattrapage;
    dire({Etat::attente{*echec, reprise.recul}});
    if (reprise.recul > Secondes(0)) flux_.pauser(millisecondes(reprise.recul));
  }
}

OreilleNtfy::Issue OreilleNtfy::suivre(const RequeteHTTP& requete, std::string_view topic) {
  dire({Etat::connexion{}});
  ouverte_ = false;
  const auto ouverture = flux_.ouvrir(requete);
  if (!ouverture) {
    if (ouverture.raison() == ErreurReseau::annulee) return arret{};
    return echecDeTransport(ouverture.raison());
  }
  if (!estUnSucces(*ouverture)) return EchecNtfy{EchecNtfy::http{*ouverture}};
  if (!acquis_.repondre(horloge_())) return rotation{};

  const Secondes terme = horloge_() + AbonnementNtfy::rotationSocket;
  for (Secondes reste = AbonnementNtfy::rotationSocket; reste > Secondes(0); reste = terme - horloge_()) {
    const auto lecture = flux_.suivante(millisecondes(reste));
    std::optional<Issue> issue;
    std::visit(Selon{[&](const LectureFlux::ligne& l) { entendre(l.texte, topic); },
                     [](const LectureFlux::attente&) {},
                     [&](const LectureFlux::tropLongue&) { dire({Etat::ligneSautee{}}); },
                     [&](const LectureFlux::fin&) { issue = EchecNtfy{EchecNtfy::flotEnLoques{}}; },
                     [&](const LectureFlux::illisible&) { issue = EchecNtfy{EchecNtfy::flotEnLoques{}}; },
                     [&](const LectureFlux::perte& p) {
                       if (p.erreur == ErreurReseau::annulee)
                         issue = arret{};
                       else
                         issue = echecDeTransport(p.erreur);
                     }},
               lecture.cas);
    if (issue) return *issue;
  }
  return rotation{};
}

void OreilleNtfy::entendre(std::string_view ligne, std::string_view topic) {
  const auto sse = FluxSSE::lire(ligne);
  const auto* charge = std::get_if<FluxSSE::Ligne::charge>(&sse.cas);
  if (!charge) return;
  const auto lecture = MessageNtfy::lire(charge->texte, topic);
  if (std::holds_alternative<LectureNtfy::rien>(lecture.cas)) return;

  const Secondes maintenant = horloge_();
  if (!std::exchange(ouverte_, true)) {
    tentative_ = 0;
    dire({Etat::ouverte{}});
  }
  if (const auto* lu = std::get_if<LectureNtfy::message>(&lecture.cas)) {
    if (journal_.neuf(lu->message.id) && rappels_.surMessage) rappels_.surMessage(lu->message);
    acquis_.recevoir(maintenant, depuis1970(lu->message.date));
  } else {
    const auto heure = MessageNtfy::heure(charge->texte);
    acquis_.vivre(maintenant, heure ? std::optional(depuis1970(*heure)) : std::nullopt);
  }
  if (rappels_.surSigne) rappels_.surSigne();
}

OreilleNtfy::Souvenir OreilleNtfy::souvenir() const {
  Souvenir souvenir{.age = {}, .ids = {journal_.ids().begin(), journal_.ids().end()}};
  if (const auto jusque = acquis_.connu()) souvenir.age = horloge_() - *jusque;
  return souvenir;
}

void OreilleNtfy::dire(Etat etat) const {
  if (rappels_.surEtat) rappels_.surEtat(etat);
}

}  // namespace tarnavelle
