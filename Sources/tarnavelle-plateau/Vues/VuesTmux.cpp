#include "Vues/VuesTmux.hpp"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "MiseEnSceneInterne.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {

using namespace std::chrono_literals;
using Montre = std::chrono::steady_clock;
using Rangement = Vues::Rangement;

namespace {

constexpr auto reprise = 3s;  ///< before tmux is asked again, once it did not answer
constexpr int essaisMax = 5;  ///< of what it refuses: a pane may go while it is being laid out

std::string impossible(Panne panne) {
  return "La scène n'a pas pu être rangée : " + std::string(description(panne)) + ".";
}

}  // namespace

class VuesTmux::Corps {
 public:
  Corps(TerminauxTmux& terminaux, Registre& registre, Veille& veille, Alertes& alertes, ReglagesVues reglages)
      : terminaux_(terminaux),
        registre_(registre),
        veille_(veille),
        alertes_(alertes),
        reglages_(std::move(reglages)),
        miseEnScene_(terminaux, reglages_),
        guet_(registre) {}

  ~Corps() {
    if (!fil_.joinable()) return;
    terminaux_.surRegard({});
    {
      const std::lock_guard garde(verrou_);
      arret_ = true;
    }
    reveil_.notify_all();
    fil_.join();
    miseEnScene_.fermerPorte();
  }

  std::optional<std::string> demarrer() {
    if (!creerDossierPrive(reglages_.dossier)) return "Impossible de créer " + reglages_.dossier.string() + ".";
    const auto fait = passer(true, {});
    terminaux_.surRegard([this] { demander(true); });
    fil_ = std::thread([this] { courir(); });
    demander(true);  // somebody may have come in between; what failed is tried again
    if (fait) return std::nullopt;
    return "Les scènes n'ont pas pu être ouvertes : " + std::string(description(fait.raison())) + ".";
  }

  void demander(bool regard) {
    const std::lock_guard garde(verrou_);
    change_ = true;
    regard_ |= regard;
    reveil_.notify_all();
  }

  Resultat<Rangement, std::string> ranger(std::int64_t scene, Disposition::Plan plan,
                                          const std::string& vedette) {
    std::unique_lock garde(verrou_);
    if (arret_ || !fil_.joinable()) return Sinon{impossible(Panne::absent)};
    souhaits_[scene] = {.plan = plan, .vedette = vedette};
    change_ = regard_ = true;
    const auto numero = ++demandes_;
    reveil_.notify_all();
    const bool faite =
        fini_.wait_for(garde, 2 * Terminaux::delaiMax, [&] { return arret_ || servies_ >= numero; });
    if (!faite || arret_) return Sinon{impossible(Panne::muet)};
    if (panne_) return Sinon{impossible(*panne_)};
    const auto la = vues_.find(scene);
    if (la == vues_.end()) return Rangement::ignore;
    const bool vue = vedette.empty() ? !la->second.empty() : la->second.contains(vedette);
    return vue ? Rangement::vu : Rangement::sansVue;
  }

  std::vector<std::string> motsPourRegarder() const {
    const std::lock_guard garde(verrou_);
    return mots_;
  }

 private:
  void courir() {
    std::unique_lock garde(verrou_);
    auto pasAvant = Montre::now();
    while (true) {
      reveil_.wait(garde, [&] { return arret_ || change_; });
      // Who looks is served at once; what changes by itself is told once for many.
      reveil_.wait_until(garde, pasAvant, [&] { return arret_ || regard_; });
      if (arret_) return;
      change_ = false;
      const bool regard = std::exchange(regard_, false);
      const auto souhaits = std::exchange(souhaits_, {});
      const auto demandes = demandes_;
      garde.unlock();
      const auto fait = passer(regard, souhaits);
      garde.lock();
      servies_ = demandes;
      panne_ = fait ? std::nullopt : std::optional(fait.raison());
      vues_ = miseEnScene_.vues();
      fini_.notify_all();
      pasAvant = Montre::now() + reglages_.cadence;
      essais_ = fait ? 0 : essais_ + 1;
      const bool muet = panne_ == Panne::muet;
      if (fait || arret_ || (!muet && essais_ > essaisMax)) continue;
      reveil_.wait_for(garde, muet ? reprise : reglages_.cadence, [&] { return arret_; });
      change_ = regard_ = true;
    }
  }

  Ou<Fait> passer(bool regard, const MiseEnScene::Souhaits& souhaits) {
    auto apercu = Apercu::lire(registre_, veille_);
    if (!apercu) return Fait{};  // the registry's own callers are told
    const auto structure = structureDe(*apercu);
    if (structure != structure_ && (miseEnScene_.quelquUn() || apercu->scenes.size() != scenes_)) regard = true;
    std::int64_t visible = apercu->visible() ? apercu->visible()->numero : 1;
    Ou<Fait> fait = Fait{};
    if (regard) {
      fait = miseEnScene_.regarder(*apercu, souhaits);
      if (fait) {
        structure_ = structure;
        scenes_ = apercu->scenes.size();
        if (const auto choisie = miseEnScene_.sceneChoisie(); choisie && registre_.montrerScene(*choisie)) {
          miseEnScene_.suivre(*choisie);
          visible = *choisie;
        }
      }
    }
    direRegard(visible);
    if (fait) fait = miseEnScene_.ecrire(*apercu);
    for (const Alerte& alerte : guet_.nouvelles(*apercu)) {
      miseEnScene_.annoncer(phrase(alerte));
      alertes_.donner(alerte);
    }
    return fait;
  }

  /// Whoever comes next is shown that one.
  void direRegard(std::int64_t scene) {
    auto mots = terminaux_.motsPourRegarder(miseEnScene_.nomDeSession(scene));
    {
      const std::lock_guard garde(verrou_);
      if (mots == mots_) return;
      mots_ = mots;
    }
    if (reglages_.regard) reglages_.regard(mots);
  }

  /// What decides which views there are.
  static std::string structureDe(const Apercu& apercu) {
    std::string texte;
    for (const FicheScene& s : apercu.scenes)
      texte += std::to_string(s.numero) + (s.visible ? "*" : " ") + s.auRegard + "\n";
    for (const Apercu::Element& e : apercu.elements)
      texte += e.id + (e.ouvert ? "+" : "-") + std::to_string(e.scene) + "\n";
    return texte;
  }

  TerminauxTmux& terminaux_;
  Registre& registre_;
  Veille& veille_;
  Alertes& alertes_;
  const ReglagesVues reglages_;

  mutable std::mutex verrou_;
  std::condition_variable reveil_;
  std::condition_variable fini_;
  bool change_ = false;
  bool regard_ = false;
  bool arret_ = false;
  MiseEnScene::Souhaits souhaits_;
  std::uint64_t demandes_ = 0;
  std::uint64_t servies_ = 0;
  std::vector<std::string> mots_;                       ///< by which a person looks at the visible scene
  std::optional<Panne> panne_;                          ///< of the last round
  std::map<std::int64_t, std::set<std::string>> vues_;  ///< what somebody saw after it

  // The thread's own.
  MiseEnScene miseEnScene_;
  GuetAlertes guet_;
  std::string structure_;
  std::size_t scenes_ = 0;
  int essais_ = 0;
  std::thread fil_;
};

VuesTmux::VuesTmux(TerminauxTmux& terminaux, Registre& registre, Veille& veille, Alertes& alertes,
                   ReglagesVues reglages)
    : corps_(std::make_unique<Corps>(terminaux, registre, veille, alertes, std::move(reglages))) {}

VuesTmux::~VuesTmux() = default;

std::optional<std::string> VuesTmux::demarrer() { return corps_->demarrer(); }

void VuesTmux::rafraichir() { corps_->demander(false); }

Resultat<Vues::Rangement, std::string> VuesTmux::ranger(std::int64_t scene, std::string_view plan,
                                                        const std::string& vedette) {
  const auto voulu = Disposition::plan(plan);
  if (!voulu) return Sinon{std::string("Ce plan n'existe pas.")};
  return corps_->ranger(scene, *voulu, vedette);
}

std::vector<std::string> VuesTmux::motsPourRegarder() const { return corps_->motsPourRegarder(); }

}  // namespace tarnavelle::Plateau
