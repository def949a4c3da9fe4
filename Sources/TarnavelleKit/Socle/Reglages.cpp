#include "Socle/Reglages.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <utility>

#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

std::string nomme(const std::filesystem::path& fichier) {
  return "« " + Inoffensif::montrable(fichier.string()) + " »";
}

/// Why the file is not read; nothing when it may be, or when there is none.
std::optional<std::string> refusDuFichier(const std::filesystem::path& fichier) {
  struct stat etat {};
  if (::stat(fichier.c_str(), &etat) != 0) return std::nullopt;
  if (!S_ISREG(etat.st_mode)) return nomme(fichier) + " n'est pas un fichier : rien n'y est lu.";
  if (etat.st_uid != ::geteuid()) return nomme(fichier) + " appartient à quelqu'un d'autre : rien n'y est lu.";
  if ((etat.st_mode & (S_IRWXG | S_IRWXO)) != 0)
    return nomme(fichier) +
           " est ouvert à d'autres que vous : rien n'y est lu. Fermez-le par « chmod 600 », et changez les "
           "secrets qu'il contient.";
  return std::nullopt;
}

std::string_view sansGuillemets(std::string_view texte) {
  const bool entre =
      texte.size() >= 2 && (texte.front() == '"' || texte.front() == '\'') && texte.front() == texte.back();
  return entre ? texte.substr(1, texte.size() - 2) : texte;
}

/// The key that a line sets; empty when it sets none.
std::string_view cleDe(std::string_view ligne) {
  ligne = Texte::rogner(ligne);
  const auto egal = ligne.find('=');
  if (ligne.starts_with('#') || egal == ligne.npos) return {};
  return Texte::rogner(ligne.substr(0, egal));
}

void parLigne(std::string_view texte, const std::function<void(std::string_view ligne)>& voir) {
  texte = Texte::sansMarqueDOrdre(texte);
  while (!texte.empty()) {
    const auto fin = std::min(texte.find('\n'), texte.size());
    voir(texte.substr(0, fin));
    texte.remove_prefix(std::min(fin + 1, texte.size()));
  }
}

/// Why a value is none, as a clause; nothing when it is one.
std::optional<std::string> refusDeValeur(std::string_view valeur) {
  if (!Texte::utf8Valide(valeur)) return "la valeur n'est pas de l'UTF-8";
  if (Texte::porteControle(valeur)) return "la valeur contient un caractère de contrôle";
  if (valeur.size() > Reglages::valeurMax) return "la valeur est trop longue";
  return std::nullopt;
}

std::string cleInconnue(std::string_view nom) {
  return "« " + Inoffensif::montrable(Texte::tronquer(nom, 40)) + " » n'est pas un réglage connu";
}

/// An address without what may stand before its host.
std::string sansIdentifiants(const std::string& adresse) {
  const auto schema = adresse.find("://");
  const auto debut = schema == adresse.npos ? 0 : schema + 3;
  const auto fin = std::min(adresse.find_first_of("/?#", debut), adresse.size());
  const auto arobase = adresse.rfind('@', fin);
  if (arobase == adresse.npos || arobase < debut) return adresse;
  return adresse.substr(0, debut) + "…" + adresse.substr(arobase);
}

}  // namespace

std::string Reglages::enClair(const std::string& valeur) { return sansIdentifiants(valeur); }

std::string Reglages::enSecret(const std::string& valeur) {
  return "…(" + std::to_string(Texte::caracteres(valeur)) + ")";
}

const Reglages::Cle* Reglages::Famille::cle(std::string_view nom) const {
  const auto trouvee = std::ranges::find(cles, nom, &Cle::nom);
  return trouvee == cles.end() ? nullptr : &*trouvee;
}

std::filesystem::path Reglages::Famille::chemin(const Variables& environnement) const {
  return dossierReglages(environnement) / "tarnavelle" / fichier;
}

Reglages Reglages::lire(const Variables& environnement, const Famille& famille) {
  Reglages reglages;
  const auto fichier = famille.chemin(environnement);
  if (auto refus = refusDuFichier(fichier)) {
    reglages.plaintes_.push_back(*std::move(refus));
  } else {
    int numero = 0;
    parLigne(lireFichier(fichier, tailleMax).value_or(""), [&](std::string_view ligne) {
      ++numero;
      const auto nette = Texte::rogner(ligne);
      if (nette.empty() || nette.starts_with('#')) return;
      const auto plaindre = [&](const std::string& pourquoi) {
        reglages.plaintes_.push_back(nomme(fichier) + ", ligne " + std::to_string(numero) + " : " + pourquoi +
                                     ".");
      };
      const auto nom = cleDe(nette);
      if (nom.empty()) return plaindre("il y faut NOM=VALEUR");
      if (!famille.cle(nom)) return plaindre(cleInconnue(nom));
      const auto valeur = Texte::rogner(sansGuillemets(Texte::rogner(nette.substr(nette.find('=') + 1))));
      if (auto faute = refusDeValeur(valeur)) return plaindre(*faute);
      if (!valeur.empty()) reglages.valeurs_[std::string(nom)] = {std::string(valeur), Source::fichier};
    });
  }
  for (const Cle& c : famille.cles) {
    auto valeur = environnement.texte(std::string(c.nom).c_str());
    if (!valeur) continue;
    if (auto refus = refusDeValeur(*valeur))
      reglages.plaintes_.push_back("La variable " + std::string(c.nom) + " : " + *refus + ".");
    else
      reglages.valeurs_[std::string(c.nom)] = {*std::move(valeur), Source::environnement};
  }
  return reglages;
}

const Reglages::Valeur* Reglages::valeur(std::string_view nom) const {
  const auto trouvee = valeurs_.find(nom);
  return trouvee == valeurs_.end() ? nullptr : &trouvee->second;
}

std::optional<std::string> Reglages::texte(std::string_view nom) const {
  const Valeur* trouvee = valeur(nom);
  return trouvee ? std::optional(trouvee->texte) : std::nullopt;
}

std::string Reglages::montrable(const Cle& cle) const { return cle.montrer(texte(cle.nom).value_or("")); }

Variables Reglages::variables() const {
  Environnement dites;
  for (const auto& [nom, valeur] : valeurs_) dites.emplace(nom, valeur.texte);
  return dites;
}

Resultat<Fait, std::string> Reglages::regler(const Variables& environnement, const Famille& famille,
                                             std::string_view nom, std::string_view valeur) {
  if (!famille.cle(nom)) return Sinon{cleInconnue(nom) + "."};
  valeur = Texte::rogner(valeur);
  if (const auto refus = refusDeValeur(valeur)) return Sinon{"Rien n'est réglé : " + *refus + "."};
  const auto fichier = famille.chemin(environnement);
  if (auto refus = refusDuFichier(fichier)) return Sinon{*std::move(refus)};
  std::error_code absent;
  if (std::filesystem::is_symlink(fichier, absent))
    return Sinon{nomme(fichier) + " est un lien : c'est le fichier même qu'il faut changer."};
  const auto lu = lireFichier(fichier, tailleMax);
  if (!lu && std::filesystem::exists(fichier, absent)) return Sinon{nomme(fichier) + " ne peut pas être lu."};

  std::string neuf;
  bool pose = valeur.empty();
  const std::string_view guillemet = sansGuillemets(valeur) == valeur ? "" : "\"";  // they are part of it
  std::string ligneNeuve = std::string(nom) + "=";
  ligneNeuve.append(guillemet).append(valeur).append(guillemet).append("\n");
  parLigne(lu.value_or(""), [&](std::string_view ligne) {
    if (cleDe(ligne) != nom)
      neuf.append(ligne).append("\n");
    else if (!std::exchange(pose, true))
      neuf += ligneNeuve;
  });
  if (!pose) neuf += ligneNeuve;
  if (!creerDossierPrive(fichier.parent_path()) || !ecrireFichierPrive(fichier, neuf))
    return Sinon{nomme(fichier) + " ne peut pas être écrit."};
  return Fait{};
}

}  // namespace tarnavelle
