#include "Client.hpp"

#include <unistd.h>

#include <algorithm>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "Affichage.hpp"
#include "Aide.hpp"
#include "Appel/AppelPorte.hpp"
#include "Catalogue.hpp"
#include "Chemins.hpp"
#include "Commandes.hpp"
#include "Completions.hpp"
#include "Depot.hpp"
#include "DirePorte.hpp"
#include "LigneCommande.hpp"
#include "Photo.hpp"
#include "Porte/LigneVerbe.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Porte/ReponsePorte.hpp"
#include "Porte/Version.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Client {
namespace {

int avertir(Session& session, const std::string& message, int statut) {
  session.erreurs.avertir(message);
  return statut;
}

/// A sentence of the door's, which may hold the token that it was given.
std::string phrase(const std::optional<std::string>& texte, const RecherchePorte& recherche) {
  return texte ? Texte::sansSecret(Texte::rogner(*texte), recherche.porte->jeton) : "";
}

/// The picture of a reply: to a file on a terminal, or when the command line named one, else as it is.
int rendrePhoto(const std::string& png, const Json& corps, Session& session) {
  const std::string demande = Champ::texte(corps, "chemin");
  if (demande.empty() && !session.sortie.terminal()) {
    session.sortie.rendre(png);
    return Statut::fait;
  }
  return deposer(session, Photo::chemin(demande), png, Statut::sansReponse);
}

int rendreReussite(const std::string& dite, const Json& donnees, const LigneCommande& ligne, const Json& corps,
                   Session& session) {
  if (Champ::booleen(corps, "inline", false)) {
    if (const auto png = Photo::png(donnees)) return rendrePhoto(*png, corps, session);
    if (!ligne.donnees)  // neither a sentence into the picture's file, nor broken base64 onto the terminal
      return avertir(session, "La réponse de la porte ne contient pas de photo lisible.", Statut::sansReponse);
  }
  if (!dite.empty() && (!ligne.donnees || donnees.is_null()))
    session.sortie.montrer({{dite}});
  else if (!donnees.is_null())
    session.sortie.montrer(Affichage::exposer(donnees, session.sortie.colonnes()));
  else
    session.sortie.montrer({{"C'est fait."}});
  return Statut::fait;
}

/// Nothing came back. A verb that this client does not know, and that no door was asked for, is a wrong line.
int rendreSilence(const std::vector<std::string>& messages, bool partie, const LigneCommande& ligne,
                  Session& session) {
  const bool inconnu = !ligne.commande.outil;
  if (inconnu) session.erreurs.avertir(verbeInconnu(ligne.mot));
  for (const std::string& message : messages) session.erreurs.avertir(message);
  return inconnu && !partie ? Statut::mauvaiseLigne : Statut::sansReponse;
}

int rendre(const Coffre& coffre, const RecherchePorte& recherche, const LigneCommande& ligne, const Json& corps,
           Session& session) {
  const std::string statut = " (HTTP " + std::to_string(coffre.statut) + ")";
  auto document = LectureJSON::objet(*coffre.data).value_or(Json::object());
  const Json donnees = std::exchange(document["data"], nullptr);  // laid out as it came, never copied
  const auto reponse = ReponsePorte::depuis(document);
  if (!reponse) {
    session.erreurs.avertir("La réponse de la porte est illisible" + statut + ".");
    return avertir(session, DirePorte::origine(recherche, session.environnement), Statut::sansReponse);
  }
  if (ligne.json) session.sortie.rendre(*coffre.data);
  if (reponse->ok)
    return ligne.json ? Statut::fait
                      : rendreReussite(phrase(reponse->spoken_text, recherche), donnees, ligne, corps, session);

  auto raison = phrase(reponse->error, recherche);
  // A cockpit knows nothing of it, and says so as of a word that means nothing.
  if (ligne.commande.outil && !LigneVerbe::de(Champ::texte(corps, "action")) &&
      raison.starts_with("Verbe inconnu"))
    raison =
        "Cette porte n'est pas celle d'un plateau de terminaux (tarnavelle-plateau) : elle ne sait pas dire "
        "« " +
        Champ::texte(corps, "action") + " ».";
  session.erreurs.avertir(raison.empty() ? "La porte a refusé sans dire pourquoi" + statut + "." : raison);
  if (!ligne.commande.outil)
    if (const auto proche = nomVoulu(ligne.mot)) session.erreurs.avertir("Vouliez-vous dire " + *proche + " ?");
  return Statut::refus;
}

int appeler(const LigneCommande& ligne, Session& session) {
  Json corps = ligne.charge;
  PorteMCP::completerAgent(corps, session.environnement.texte("TARNAVELLE_NODE_ID").value_or(""));
  if (ligne.commande.outil && !Chemins::rendreAbsolus(corps, *ligne.commande.outil, session))
    return Statut::mauvaiseLigne;
  const Variables& environnement = session.environnement;
  const auto recherche = PorteControle::chercherPorte(environnement);
  if (!recherche.porte)
    return rendreSilence(DirePorte::introuvable(recherche, environnement), false, ligne, session);
  if (recherche.variable && !recherche.parVariable())
    session.erreurs.avertir(DirePorte::variable(recherche, environnement) + ". " +
                            DirePorte::fichier(recherche, environnement) + ".");
  const auto attente = patience(corps);
  AppelPorte appel({.attente = attente, .vie = attente, .corpsMax = AppelPorte::bornes.corpsMax});
  std::vector<EnteteHTTP> entetes;
  if (CommandeControle::canonique(Champ::texte(corps, "action")) == "attendre")
    entetes.push_back({entetePatience, std::to_string(attente.count())});
  const Coffre coffre = appel.posterPorte(corps, *recherche.porte, entetes);
  if (const auto& echec = appel.echec())
    return rendreSilence(DirePorte::sansReponse(*echec, attente, recherche, environnement), echec->partie,
                         ligne, session);
  return rendre(coffre, recherche, ligne, corps, session);
}

/// Whether the person at the terminal says so, after what the door has told.
bool acquiesce(Session& session, std::string_view question) {
  session.erreurs.montrer({{std::string(question)}});
  std::string ligne;
  for (char c = 0; ligne.size() < 80 && ::read(0, &c, 1) == 1 && c != '\n';) ligne += c;
  const std::string dit = Texte::replier(Texte::reparer(ligne));
  return dit == "o" || dit == "oui";
}

/// What a service would do is told first, and done once it is confirmed: by its flag, or at a terminal.
int confirmer(const LigneCommande& ligne, std::string_view drapeau, Session& session) {
  if (Champ::booleen(ligne.charge, drapeau, false)) return appeler(ligne, session);
  if (const int statut = appeler(ligne, session); statut != Statut::fait) return statut;
  const std::string rien = "Rien n'a été fait";
  if (::isatty(0) != 1 || !session.sortie.terminal())
    return avertir(session, rien + " : ajoutez --" + std::string(drapeau) + " pour confirmer.", Statut::refus);
  if (!acquiesce(session, "Confirmer ? [o/N]")) return avertir(session, rien + ".", Statut::refus);
  LigneCommande confirmee = ligne;
  confirmee.charge[std::string(drapeau)] = true;
  return appeler(confirmee, session);
}

int mener(const LigneCommande& ligne, Session& session) {
  if (ligne.version) {
    session.sortie.montrer({{"tarnavellectl " + std::string(versionTarnavelle)}});
    return Statut::fait;
  }
  if (ligne.aide) return Commandes::aide(session, {{"verbe", ligne.mot}});
  if (!ligne.laisses.empty())
    session.erreurs.avertir("De trop, et laissé de côté : " + Texte::joindre(ligne.laisses, ", ", citer) + ".");
  const CommandeLocale* locale = ligne.commande.locale;
  if (locale && !locale->service) return locale->executer(session, ligne.charge);
  if (locale && !locale->service->confirmation.empty())
    return confirmer(ligne, locale->service->confirmation, session);
  return appeler(ligne, session);
}

}  // namespace

std::chrono::seconds patience(const Json& corps) {
  constexpr std::chrono::seconds marge{10}, autres{90};
  const LigneVerbe* verbe = LigneVerbe::de(CommandeControle::canonique(Champ::texte(corps, "action")));
  const auto delai = verbe ? verbe->delaiDe(corps) : std::nullopt;
  return delai ? *delai + marge : autres;
}

int executer(const std::vector<std::string>& mots, Session& session) {
  // The words of another command line, not to be read as this one's.
  if (const auto autres = Completions::motsACompleter(mots)) return Completions::proposer(*autres, session);

  auto lue = LigneCommande::lire(mots);
  if (!lue) {
    const FauteLigne& faute = lue.raison();
    session.erreurs.avertir(faute.message);
    session.erreurs.montrer({{Aide::usage(faute.outil)}});
    if (!faute.outil) session.erreurs.montrer({{"« tarnavellectl --help » liste les verbes."}});
    return Statut::mauvaiseLigne;
  }
  int statut = Statut::sansReponse;
  try {
    statut = mener(*lue, session);
  } catch (const std::bad_alloc&) {
    session.erreurs.avertir("La mémoire manque pour cette réponse.");
  }
  if (!session.sortie.perdu()) return statut;
  session.erreurs.avertir("Impossible d'écrire sur la sortie.");
  return Statut::sansReponse;
}

}  // namespace tarnavelle::Client
