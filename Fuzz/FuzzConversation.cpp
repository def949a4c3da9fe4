// A conversation's thread as Hermès dictates it, and its box as the keyboard does.
#include <string>
#include <variant>

#include "Boite.hpp"
#include "Cible.hpp"
#include "Clavier.hpp"
#include "EnvHermes.hpp"
#include "Fil.hpp"
#include "Socle/Colonnes.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

namespace {

void verifier(const std::vector<std::string>& lignes, std::size_t colonnes) {
  for (const std::string& ligne : lignes)
    exiger(Inoffensif::montrable(ligne) == ligne && Colonnes::largeur(ligne) <= colonnes);
}

void taper(std::string_view octets, std::size_t colonnes) {
  Clavier clavier;
  Boite boite;
  const auto appliquer = [&](const std::vector<Frappe>& frappes) {
    for (const Frappe& frappe : frappes) {
      if (const auto* saisie = std::get_if<Frappe::saisie>(&frappe.cas)) boite.inserer(saisie->texte);
      if (const auto* collage = std::get_if<Frappe::collage>(&frappe.cas)) boite.inserer(collage->texte);
      if (const auto* touche = std::get_if<Frappe::Touche>(&frappe.cas)) boite.toucher(*touche);
      exiger(Texte::utf8Valide(boite.texte()));
    }
  };
  appliquer(clavier.lire(octets.substr(0, octets.size() / 2)));
  appliquer(clavier.lire(octets.substr(octets.size() / 2)));
  appliquer(clavier.calme());
  const auto vue = boite.vue(colonnes, 5);
  exiger(!vue.lignes.empty() && vue.lignes.size() <= 5 && vue.ligne < vue.lignes.size() &&
         vue.colonne <= colonnes);
  verifier(vue.lignes, colonnes);
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  const std::size_t colonnes = 20 + taille % 100;
  Fil fil;
  for (std::size_t debut = 0; debut < taille; debut += 7) {
    verifier(fil.ecouter(tout.substr(debut, 7), colonnes), colonnes);
    verifier(fil.enCours(colonnes), colonnes);
  }
  verifier(fil.finir(colonnes), colonnes);
  verifier(Fil::vous(tout, colonnes), colonnes);
  verifier(Fil::outil(tout, colonnes), colonnes);
  taper(tout, colonnes);
  EnvHermes::lire(tout);
  return 0;
}
