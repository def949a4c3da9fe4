#include "Recit.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>

#include "Socle/Colonnes.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Voix {
namespace {

using Etat = ConversationVoix::Etat;
using Niveau = ConversationVoix::Message::Niveau;

constexpr std::size_t argumentsMax = 200, sortieMax = 200;

struct Mots {
  std::string_view nom;
  std::string_view enMots;
};
constexpr std::array<Mots, 6> etats = {{{"connexion", "connexion…"},
                                        {"ecoute", "à l'écoute"},
                                        {"parole", "parle"},
                                        {"outil", "au travail"},
                                        {"sommeil", "dort"},
                                        {"raccroche", "raccroché"}}};
constexpr std::array<std::string_view, 3> niveaux = {"detail", "avis", "panne"};

/// A level as a person hears it: a bar of so many columns, from -50 dB on.
std::string jauge(float niveau, std::size_t colonnes) {
  const float decibels = 20 * std::log10(std::max(niveau, 1e-5F));
  const auto pleins = static_cast<std::size_t>(
      std::clamp((decibels + 50) / 50 * static_cast<float>(colonnes), 0.0F, static_cast<float>(colonnes)));
  std::string barre;
  for (std::size_t i = 0; i < colonnes; ++i) barre += i < pleins ? "▮" : "▯";
  return barre;
}

std::string uneLigne(std::string_view texte) { return Texte::joindre(Texte::mots(texte), " "); }

}  // namespace

std::string_view nom(Etat etat) { return etats[static_cast<std::size_t>(etat)].nom; }
std::string_view enMots(Etat etat) { return etats[static_cast<std::size_t>(etat)].enMots; }

Recit::Recit(Forme forme, Descripteurs descripteurs)
    : forme_(forme),
      descripteurs_(descripteurs),
      toile_(forme == Forme::terminal ? std::make_unique<Toile>() : nullptr) {}

Recit::~Recit() { fermer(); }

void Recit::fermer() {
  if (!toile_) return;
  ecrire(adieu_);
  toile_->dessiner({.lignes = {""}, .curseur = true});
  toile_.reset();
}

void Recit::ecrire(const std::string& octets) {
  if (!ecrireTout(descripteurs_.dits, octets)) perdu_ = true;
}

void Recit::objet(const Json& objet) { ecrire(EcritureJSON::compacte(objet).value_or("{}") + "\n"); }

void Recit::ligne(std::string_view debut, const std::string& texte, bool aCote) {
  const std::string nette = Inoffensif::montrable(uneLigne(texte));
  if (!toile_ && aCote) {
    ecrireTout(descripteurs_.messages, std::string(debut) + nette + "\n");
    return;
  }
  if (!toile_) return ecrire(std::string(debut) + nette + "\n");
  const auto retrait = Colonnes::largeur(debut);
  const auto colonnes = toile_->colonnes();
  bool premiere = true;
  for (const std::string& pliee : Colonnes::plier(nette, colonnes - std::min(retrait, colonnes / 2))) {
    toile_->ajouter(
        Colonnes::couper((premiere ? std::string(debut) : std::string(retrait, ' ')) + pliee, colonnes));
    premiere = false;
  }
}

void Recit::operateur(const std::string& texte) {
  if (forme_ == Forme::json) return objet({{"evenement", "operateur"}, {"texte", Texte::reparer(texte)}});
  ligne("Vous : ", texte);
}

void Recit::modele(const std::string& texte) {
  if (forme_ == Forme::json) return objet({{"evenement", "modele"}, {"texte", Texte::reparer(texte)}});
  ligne("Voix : ", texte);
}

void Recit::outil(const std::string& nom, const std::string& arguments) {
  if (forme_ == Forme::json)
    return objet(
        {{"evenement", "outil"}, {"nom", Texte::reparer(nom)}, {"arguments", Texte::reparer(arguments)}});
  ligne("  → ", nom + (arguments == "{}" ? "" : " " + Texte::tronquer(arguments, argumentsMax)));
}

void Recit::outilRendu(const std::string& nom, const std::string& sortie, double secondes) {
  if (forme_ == Forme::json)
    return objet({{"evenement", "outil_fini"},
                  {"nom", Texte::reparer(nom)},
                  {"sortie", Texte::reparer(sortie)},
                  {"secondes", std::round(secondes * 1000) / 1000}});
  ligne("  ← ", Texte::tronquer(sortie, sortieMax));
}

void Recit::message(const ConversationVoix::Message& message) {
  if (forme_ == Forme::json) {
    Json dit = {{"evenement", "message"},
                {"niveau", niveaux[static_cast<std::size_t>(message.niveau)]},
                {"texte", Texte::reparer(message.texte)}};
    if (!message.conseil.empty()) dit["conseil"] = Texte::reparer(message.conseil);
    return objet(dit);
  }
  ligne(message.niveau == Niveau::detail ? "  " : "",
        message.texte + (message.conseil.empty() ? "" : " " + message.conseil), true);
}

void Recit::etat(Etat etat) {
  etat_ = etat;
  if (forme_ == Forme::json) objet({{"evenement", "etat"}, {"etat", nom(etat)}});
}

void Recit::cout(const ConversationVoix::Cout& cout) {
  cout_ = cout.ligne;
  if (forme_ == Forme::json)
    objet(
        {{"evenement", "cout"}, {"dollars", cout.dollars}, {"tours", cout.usage.tours}, {"ligne", cout.ligne}});
}

void Recit::fin(const ConversationVoix::Cout& cout, const std::string& jour) {
  if (forme_ == Forme::json) {
    Json dit = {
        {"evenement", "fin"}, {"dollars", cout.dollars}, {"tours", cout.usage.tours}, {"ligne", cout.ligne}};
    if (!jour.empty()) dit["jour"] = jour;
    return objet(dit);
  }
  ligne("", cout.ligne, true);
  if (!jour.empty()) ligne("", jour, true);
}

void Recit::vivre(const Vif& vif) {
  if (!toile_) return;
  const bool parle = etat_ == Etat::parole;
  std::string texte = jauge(parle ? vif.parole : vif.micro, 10) + "  " + Colonnes::completer(enMots(etat_), 12);
  if (!cout_.empty()) texte += "  " + cout_;
  if (const auto reste = toile_->colonnes(); Colonnes::largeur(texte) + Colonnes::largeur(vif.aide) + 5 < reste)
    texte += "  · " + std::string(vif.aide);
  if (!toile_->dessiner({.lignes = {Colonnes::couper(texte, toile_->colonnes() - 1)}, .curseur = false}))
    perdu_ = true;
}

void Recit::commander(std::string_view debut, std::string_view fin) {
  if (!toile_) return;
  adieu_ += fin;
  ecrire(std::string(debut));
}

void Recit::remesurer() {
  if (toile_) toile_->mesurer();
}

}  // namespace tarnavelle::Voix
