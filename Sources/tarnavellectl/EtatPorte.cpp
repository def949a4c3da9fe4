#include <signal.h>

#include <cerrno>
#include <string>

#include "Appel/AppelPorte.hpp"
#include "Commandes.hpp"
#include "DirePorte.hpp"
#include "Lexique.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/ReponsePorte.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Commandes {
namespace {

constexpr std::chrono::seconds patience{5};  ///< a door that works answers at once

/// What can be known from here of the door that would be called.
class EtatPorte {
 public:
  explicit EtatPorte(const Variables& environnement)
      : environnement_(environnement), recherche_(PorteControle::chercherPorte(environnement)) {
    if (recherche_.porte) interroger(*recherche_.porte);
  }

  /// As for a verb: done, refused, or no answer.
  int statut() const { return !reponse_ ? Statut::sansReponse : reponse_->ok ? Statut::fait : Statut::refus; }

  Json document() const {
    Json faits = {{"repond", reponse_.has_value()},
                  {"fichier", Texte::reparer(PorteControle::cheminEndpoint(environnement_).string())}};
    if (recherche_.porte) {
      faits["adresse"] = DirePorte::adresse(*recherche_.porte);
      faits["source"] = recherche_.parVariable() ? "variable" : "fichier";
    }
    if (recherche_.endpoint) {
      faits["pid"] = recherche_.endpoint->pid;
      faits["vivant"] = vivant(recherche_.endpoint->pid);
    }
    if (const auto juge = jetonAccepte()) faits["jeton_accepte"] = *juge;
    if (statut() != Statut::fait) faits["raison"] = raison();
    return faits;
  }

  Page page() const {
    Lexique lexique;
    lexique.ajouter("Adresse", recherche_.porte ? DirePorte::adresse(*recherche_.porte) : "aucune");
    lexique.ajouter("Variable", DirePorte::variable(recherche_, environnement_));
    lexique.ajouter("Fichier", DirePorte::fichier(recherche_, environnement_) + autreAdresse());
    if (recherche_.endpoint)
      lexique.ajouter("Processus", std::to_string(recherche_.endpoint->pid) +
                                       (vivant(recherche_.endpoint->pid)
                                            ? ", en vie"
                                            : ", disparu : le fichier est celui d'un cockpit fermé"));
    lexique.ajouter("Réponse", statut() == Statut::fait ? "la porte répond" : raison());
    const auto juge = jetonAccepte();
    lexique.ajouter("Jeton", (!juge ? "pas jugé" : *juge ? "accepté" : "refusé") + jetonVide());
    Page page = {{"Porte de commande", true}};
    lexique.versPage(page, std::nullopt);  // paths stay whole, to be copied
    return page;
  }

 private:
  /// Asks what changes nothing.
  void interroger(const PorteResolue& porte) {
    AppelPorte appel({.attente = patience, .vie = patience, .corpsMax = AppelPorte::bornes.corpsMax});
    const Coffre coffre = appel.posterPorte(CommandeControle::chargeGenerique("etat", {}), porte);
    echec_ = appel.echec();
    statutHTTP_ = coffre.statut;
    if (coffre.data) reponse_ = ReponsePorte::lire(*coffre.data);
  }

  static bool vivant(std::int64_t pid) {
    const auto processus = static_cast<pid_t>(pid);
    if (processus <= 0 || processus != pid) return false;  // zero and below are groups
    return ::kill(processus, 0) == 0 || errno == EPERM;
  }

  bool jetonJuge() const { return statutHTTP_ == 401 || statutHTTP_ == 403; }

  std::optional<bool> jetonAccepte() const {
    if (reponse_ && reponse_->ok) return true;
    return reponse_ && jetonJuge() ? std::optional(false) : std::nullopt;
  }

  /// Why all is not well: a clause.
  std::string raison() const {
    if (!recherche_.porte) return "pas de porte à appeler";
    if (echec_) return DirePorte::raison(*echec_, patience);
    const std::string http = "HTTP " + std::to_string(statutHTTP_);
    if (!reponse_)
      return http + (jetonJuge() ? ", sans le corps d'une porte : jeton refusé, ou autre serveur"
                                 : ", d'un serveur qui n'est pas une porte");
    const std::string dit =
        Texte::sansSecret(Texte::rogner(reponse_->error.value_or("")), recherche_.porte->jeton);
    return "la porte refuse (" + http + ")" + (dit.empty() ? "" : " : " + dit);
  }

  /// A door that the variable hides.
  std::string autreAdresse() const {
    if (!recherche_.parVariable()) return {};
    const auto endpoint = PorteControle::lireEndpoint(PorteControle::cheminEndpoint(environnement_));
    const auto autre = endpoint ? DirePorte::adresse({.url = endpoint->url(), .jeton = endpoint->token}) : "";
    return autre.empty() ? "" : " ; il donne " + autre;
  }

  std::string jetonVide() const {
    if (!recherche_.porte || !recherche_.porte->jeton.empty()) return {};
    return recherche_.parVariable() ? ", vide : TARNAVELLE_CONTROL_TOKEN n'est pas définie"
                                    : ", vide dans le fichier";
  }

  const Variables& environnement_;
  RecherchePorte recherche_;
  std::optional<EchecHTTP> echec_;
  int statutHTTP_ = -1;
  std::optional<ReponsePorte> reponse_;
};

}  // namespace

int porte(Session& session, const Json& arguments) {
  const EtatPorte etat(session.environnement);
  if (Champ::booleen(arguments, "json", false))
    session.sortie.rendre(EcritureJSON::lisible(etat.document()).value_or("{}") + "\n");
  else
    session.sortie.montrer(etat.page());
  return etat.statut();
}

}  // namespace tarnavelle::Commandes
