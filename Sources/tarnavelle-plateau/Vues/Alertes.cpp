#include "Vues/Alertes.hpp"

#include <set>
#include <string>
#include <utility>

namespace tarnavelle::Plateau {

std::string phrase(const Alerte& alerte) {
  switch (alerte.genre) {
    case Alerte::Genre::besoin: return alerte.nom + " a besoin de vous.";
    case Alerte::Genre::tacheFinie: return alerte.nom + " a fini sa tâche.";
    case Alerte::Genre::tacheSansPreuve: return "La tâche de " + alerte.nom + " est close sans preuve.";
  }
  return "";
}

GuetAlertes::GuetAlertes(Registre& registre) : registre_(registre) {
  if (auto dites = registre.alertes()) dites_.insert(dites->begin(), dites->end());
}

/// Noted before it is given: rather lost with the door than given twice.
bool GuetAlertes::neuve(const std::string& sujet) {
  if (!dites_.insert(sujet).second) return false;
  registre_.alerter(sujet);
  return true;
}

std::vector<Alerte> GuetAlertes::nouvelles(const Apercu& apercu) {
  std::vector<Alerte> alertes;
  for (const Apercu::Element& e : apercu.elements) {
    const std::string sujet = "besoin " + e.id;
    if (e.etat == Etat::besoin) {
      // One may follow the other between two looks at the board.
      Instant& depuis = besoins_.try_emplace(e.id, e.depuis).first->second;
      const bool autre = std::exchange(depuis, e.depuis) != e.depuis;
      if (neuve(sujet) || autre) alertes.push_back({Alerte::Genre::besoin, e.nom, e.besoin});
      continue;
    }
    besoins_.erase(e.id);
    if (e.etat != Etat::inconnu && dites_.erase(sujet) > 0) {  // unknown: it may still need him
      registre_.apaiser(sujet);
    }
  }
  constexpr std::string_view deTache = "tache ";
  std::set<std::string> closes;
  for (const FicheTache& t : apercu.closes) {
    const std::string& sujet = *closes.insert(std::string(deTache) + std::to_string(t.numero)).first;
    if (neuve(sujet))
      alertes.push_back(
          {t.etat == FicheTache::Etat::done ? Alerte::Genre::tacheFinie : Alerte::Genre::tacheSansPreuve,
           t.nomAgent, t.note.empty() ? t.prompt : t.note});
  }
  std::erase_if(dites_, [&](const std::string& sujet) {  // opened again, it will end anew
    const bool rouverte = sujet.starts_with(deTache) && !closes.contains(sujet);
    if (rouverte) registre_.apaiser(sujet);
    return rouverte;
  });
  return alertes;
}

AlertesEnFile::AlertesEnFile(std::vector<std::unique_ptr<CanalAlertes>> canaux,
                             std::function<void(const std::string&)> plainte)
    : canaux_(std::move(canaux)), plainte_(std::move(plainte)), fil_([this] { courir(); }) {}

AlertesEnFile::~AlertesEnFile() {
  {
    const std::lock_guard garde(verrou_);
    arret_ = true;
  }
  reveil_.notify_all();
  fil_.join();
}

void AlertesEnFile::donner(const Alerte& alerte) {
  const std::lock_guard garde(verrou_);
  if (file_.size() == enAttenteMax) {
    file_.pop_front();
    ++perdues_;
  }
  file_.push_back(alerte);
  reveil_.notify_all();
}

void AlertesEnFile::courir() {
  const auto arret = [this] {
    const std::lock_guard ici(verrou_);
    return arret_;
  };
  std::unique_lock garde(verrou_);
  while (true) {
    reveil_.wait(garde, [&] { return arret_ || !file_.empty(); });
    if (arret_) return;
    const Alerte alerte = std::move(file_.front());
    file_.pop_front();
    const std::size_t perdues = std::exchange(perdues_, 0);
    garde.unlock();
    if (perdues > 0) plainte_("Trop d'alertes à la fois : " + std::to_string(perdues) + " de perdues.");
    for (const auto& canal : canaux_)
      if (const auto raison = arret() ? std::nullopt : canal->donner(alerte, arret)) plainte_(*raison);
    garde.lock();
  }
}

}  // namespace tarnavelle::Plateau
