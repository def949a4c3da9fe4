#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "Catalogue.hpp"
#include "Commandes.hpp"
#include "Hermes/ReglagesHermes.hpp"
#include "Lexique.hpp"
#include "Porte/Programme.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"
#include "Terminal/Saisie.hpp"

namespace tarnavelle::Commandes {
namespace {

int refuser(Session& session, std::string_view message) {
  session.erreurs.avertir(message);
  return Statut::mauvaiseLigne;
}

std::string_view nom(ReglagesHermes::Source source) {
  return source == ReglagesHermes::Source::environnement ? "environnement" : "fichier";
}

/// How Hermès is reached, or why not.
std::string voie(const ReglagesHermes& reglages) {
  if (auto refus = reglages.refusVoie("")) return *std::move(refus);
  const std::string hote = reglages.hotePour("");
  return hote.empty() ? "par son adresse, sans ssh" : "par ssh, sur " + hote;
}

Json document(const ReglagesHermes& reglages, const std::string& fichier) {
  Json regles = Json::object();
  for (const auto& cle : ReglagesHermes::cles())
    if (const auto* valeur = reglages.valeur(cle.nom))
      regles[std::string(cle.nom)] = {{"valeur", reglages.montrable(cle)}, {"source", nom(valeur->source)}};
  Json faits = {{"fichier", Texte::reparer(fichier)},
                {"reglages", regles},
                {"plaintes", reglages.plaintes()},
                {"voie", voie(reglages)},
                {"oreille", reglages.ntfy().pret()}};
  if (const auto refus = reglages.ntfy().refus()) faits["oreille_refus"] = *refus;
  return faits;
}

int montrer(Session& session, bool json) {
  const auto reglages = ReglagesHermes::lire(session.environnement);
  const std::string fichier = ReglagesHermes::chemin(session.environnement).string();
  if (json) {
    session.sortie.rendre(EcritureJSON::lisible(document(reglages, fichier)).value_or("{}") + "\n");
    return Statut::fait;
  }
  Page page{{"Réglages", true}};
  Lexique lexique, issues;
  for (const auto& cle : ReglagesHermes::cles()) {
    const auto* valeur = reglages.valeur(cle.nom);
    lexique.ajouter(std::string(cle.nom),
                    std::string(cle.objet) + " : " +
                        (valeur ? reglages.montrable(cle) + " (" + std::string(nom(valeur->source)) + ")"
                                : std::string("pas réglé")));
  }
  lexique.versPage(page, session.sortie.colonnes());
  page.push_back({""});
  issues.ajouter("Fichier", fichier);
  issues.ajouter("Oreille", reglages.ntfy().refus().value_or("prête"));
  issues.ajouter("Parole", voie(reglages));
  issues.versPage(page, session.sortie.colonnes());
  session.sortie.montrer(page);
  for (const std::string& plainte : reglages.plaintes()) session.erreurs.avertir(plainte);
  return Statut::fait;
}

int regler(Session& session, const std::string& mot) {
  const auto* cle = ReglagesHermes::cle(mot);
  if (!cle)
    return refuser(
        session,
        (mot.empty() ? "Il manque le réglage." : "Réglage inconnu : " + citer(mot) + ".") + " Connus : " +
            Texte::joindre(ReglagesHermes::cles(), ", ", [](const auto& c) { return std::string(c.nom); }) +
            ".");
  const auto valeur = saisirSansEcho(ReglagesHermes::valeurMax, [&] {
    session.erreurs.montrer({{"Valeur (rien ne s'affiche ; vide pour ne plus rien régler) :"}});
  });
  if (!valeur)
    return refuser(session, "Rien n'est réglé : aucune valeur n'est venue. Une ligne vide ôte le réglage.");
  if (const auto fait = ReglagesHermes::regler(session.environnement, cle->nom, *valeur); !fait)
    return refuser(session, fait.raison());
  const auto reglages = ReglagesHermes::lire(session.environnement);
  const auto* neuve = reglages.valeur(cle->nom);
  session.sortie.montrer(
      {{std::string(cle->nom) + (neuve ? " : " + reglages.montrable(*cle) : " n'est plus réglé") +
        (neuve && neuve->source == ReglagesHermes::Source::environnement
             ? ", de l'environnement, qui passe avant le fichier."
             : ".")}});
  return Statut::fait;
}

/// Gives this process to the program that knows the network's streams.
int confier(Session& session, const std::vector<std::string>& mots) {
  const std::string programme = Programme::voisin("tarnavelle-hermes");
  std::vector<std::string> tous = {programme};
  tous.insert(tous.end(), mots.begin(), mots.end());
  std::vector<char*> pointeurs;
  for (std::string& mot : tous) pointeurs.push_back(mot.data());
  pointeurs.push_back(nullptr);
  ::execv(programme.c_str(), pointeurs.data());
  return refuser(session,
                 errno == ENOENT
                     ? "tarnavelle-hermes n'est pas à côté de ce programme."
                     : "tarnavelle-hermes n'a pas pu être lancé : " + std::string(std::strerror(errno)) + ".");
}

}  // namespace

int hermes(Session& session, const Json& arguments) {
  const std::string quoi = Champ::texte(arguments, "quoi");
  const std::string texte = Champ::texte(arguments, "texte");
  const bool json = Champ::booleen(arguments, "json", false);
  if (quoi.empty()) return montrer(session, json);
  if (quoi == "regler") return regler(session, texte);
  std::vector<std::string> mots = {quoi};
  if (json) mots.emplace_back("--json");
  if (quoi == "ecouter") return confier(session, mots);
  if (quoi != "parler") return refuser(session, "Ni regler, ni ecouter, ni parler : " + citer(quoi) + ".");
  if (Champ::booleen(arguments, "nouvelle", false)) mots.emplace_back("--nouvelle");
  for (const char* option : {"hote", "texte"})
    if (const std::string valeur = Champ::texte(arguments, option); !valeur.empty()) {
      mots.push_back("--" + std::string(option));
      mots.push_back(valeur);
    }
  return confier(session, mots);
}

}  // namespace tarnavelle::Commandes
