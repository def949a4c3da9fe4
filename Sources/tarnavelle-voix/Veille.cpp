#include "Veille.hpp"

#include <map>
#include <thread>
#include <utility>
#include <vector>

#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Voix {
namespace {

using Montre = std::chrono::steady_clock;

constexpr std::size_t resumeMax = 200;

}  // namespace

struct Veille::Interne {
  std::shared_ptr<const Porte> porte;
  std::optional<PlateauVu> connu;
  Rappels rappels;

  std::mutex verrou;
  std::condition_variable fin;
  bool arret = false;

  std::map<std::string, Montre::time_point, std::less<>> auTravail;

  /// What the agents' work has become.
  std::vector<Rappels::Activite> activites(const PlateauVu& vu) {
    std::vector<Rappels::Activite> dites;
    std::map<std::string, Montre::time_point, std::less<>> encore;
    for (const AgentVu& a : vu.agents) {
      const auto avant = auTravail.find(a.nom);
      const bool travaillait = avant != auTravail.end();
      if (a.travaille()) encore[a.nom] = travaillait ? avant->second : Montre::now();
      if (!a.travaille() && !travaillait) continue;
      std::string resume;
      if (!a.travaille() && !a.attend() && Montre::now() - avant->second >= travailMin)
        if (const auto reponse = porte->appeler({{"action", "resumer"}, {"agent", a.nom}}, patience);
            reponse.ok)
          resume = Texte::tronquer(reponse.texte, resumeMax);
      dites.push_back({.agent = a.nom, .travaille = a.travaille(), .resume = std::move(resume)});
    }
    auTravail = std::move(encore);
    return dites;
  }

  void tourner() {
    bool la = connu.has_value();
    std::unique_lock verrouille(verrou);
    while (!fin.wait_for(verrouille, cadence, [this] { return arret; })) {
      verrouille.unlock();
      std::string raison;
      const auto vu = regarder(*porte, &raison);
      const auto dites = vu ? activites(*vu) : std::vector<Rappels::Activite>();
      verrouille.lock();
      // Callbacks are brief: none begins once the owner is gone.
      if (arret) return;
      if (la != vu.has_value()) rappels.surPorte(vu ? "" : raison);
      la = vu.has_value();
      if (!vu) continue;
      for (const auto& dite : dites) rappels.surActivite(dite);
      if (connu)
        for (const std::string& agent : appelsNouveaux(*connu, *vu)) rappels.surAppel(agent);
      if (!connu || connu->monde != vu->monde) rappels.surPlateau(*vu);
      connu = vu;
    }
  }
};

std::optional<PlateauVu> Veille::regarder(const Porte& porte, std::string* raison) {
  const auto reponse = porte.appeler({{"action", "etat"}}, patience);
  if (raison) *raison = reponse.texte;
  return reponse.corps ? PlateauVu::lire(*reponse.corps) : std::nullopt;
}

Veille::Veille(std::shared_ptr<const Porte> porte, std::optional<PlateauVu> connu, Rappels rappels)
    : interne_(std::make_shared<Interne>()) {
  interne_->porte = std::move(porte);
  interne_->connu = std::move(connu);
  interne_->rappels = std::move(rappels);
  std::thread([interne = interne_] { interne->tourner(); }).detach();
}

Veille::~Veille() {
  const std::lock_guard verrou(interne_->verrou);
  interne_->arret = true;
  interne_->fin.notify_all();
}

}  // namespace tarnavelle::Voix
