#include "Aide.hpp"

#include "Lexique.hpp"
#include "LigneCommande.hpp"
#include "Session.hpp"
#include "Socle/Colonnes.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Aide {
namespace {

constexpr std::size_t retrait = 2;

std::string majuscules(std::string nom) {
  for (char& c : nom)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return nom;
}

void paragraphe(Page& page, std::string_view texte, std::optional<std::size_t> colonnes) {
  for (std::string& ligne : Colonnes::plier(texte, colonnes.value_or(texte.size())))
    page.push_back({std::move(ligne)});
}

void titre(Page& page, std::string texte) {
  page.push_back({});
  page.push_back({std::move(texte), true});
}

void lexiqueDOptions(Page& page, const OutilVoix* outil, const std::vector<ParamVoix>& parametres,
                     std::optional<std::size_t> colonnes) {
  Lexique lexique;
  for (const ParamVoix& p : parametres) lexique.ajouter(formeOption(outil, p), ditDe(p));
  lexique.versPage(page, colonnes);
}

}  // namespace

const std::vector<std::string_view>& principes() {
  static const std::vector<std::string_view> paragraphes = {
      "Les verbes du cockpit Tarnavelle dans un shell, par sa porte de commande : tarnavellectl en poste un, "
      "et montre la réponse.",
      "Les mots donnent les paramètres d'un verbe dans l'ordre, les obligatoires d'abord ; chacun peut aussi "
      "se donner par son option, « --option valeur » ou « --option=valeur ». Les tirets et les soulignés se "
      "valent, la casse du verbe ne compte pas, et « -- » met fin aux options. Après le verbe, un mot qui "
      "commence par un seul tiret reste un mot, à moins de nommer une option. Une valeur qui commence par deux "
      "tirets se donne avec « = ». Un drapeau se donne sans valeur, ou avec « = » : « --valider=false ».",
      "Un chemin se lit depuis le dossier courant et part absolu, car la porte travaille dans un autre. Là où "
      "un nom, une adresse ou une recherche convient aussi, un chemin commence par « ./ », « ../ », « ~/ » ou "
      "« / » ; tout autre texte part tel quel. Quand la ligne nomme un autre hôte, les chemins sont de cet "
      "hôte "
      "et partent tels quels.",
      "La réponse est la phrase du cockpit, à défaut ses données mises en page. Un refus, et tout ce qui n'est "
      "pas la réponse, va sur la sortie d'erreur. Les caractères de contrôle venus de la porte sont montrés, "
      "« \\u001b », jamais envoyés au terminal.",
      "Une photo demandée par « --inline » est écrite telle quelle sur une sortie qui n'est pas un terminal ; "
      "sur un terminal, dans le fichier que nomme « --chemin » ou dans un fichier daté du dossier courant.",
  };
  return paragraphes;
}

const std::vector<std::pair<std::string_view, std::string_view>>& variables() {
  static const std::vector<std::pair<std::string_view, std::string_view>> liste = {
      {"TARNAVELLE_CONTROL_URL", "L'adresse de la porte. À défaut, le fichier que le cockpit écrit."},
      {"TARNAVELLE_CONTROL_TOKEN", "Le jeton qui va avec cette adresse."},
      {"TARNAVELLE_NODE_ID", "L'agent appelant : qui déclare par fini et bloque, à qui est le guide."},
      {"TARNAVELLE_MCP_SERVER", "Le pont, pour mcp-config. À défaut, celui qui est à côté du client."},
      {"TARNAVELLE_AGENT_GUIDE", "Le guide déjà écrit ; guide --fichier écrit à côté."},
      {"NO_COLOR", "Si elle n'est pas vide, aucune couleur."},
  };
  return liste;
}

const std::vector<std::pair<int, std::string_view>>& statuts() {
  static const std::vector<std::pair<int, std::string_view>> liste = {
      {Statut::fait, "C'est fait."},
      {Statut::refus, "La porte a refusé ; sa raison est sur la sortie d'erreur."},
      {Statut::mauvaiseLigne,
       "La ligne de commande est fautive, ou demande ce qui ne peut se faire ici. Rien n'a été envoyé."},
      {Statut::sansReponse,
       "Pas de porte, ou elle n'a pas pu être jointe : rien n'a été envoyé. Ou sa réponse manque, est "
       "illisible ou n'a pas pu être écrite : le verbe a pu être exécuté. Le message dit ce qu'il en est."},
      {130, "Interrompu par Ctrl-C. Le verbe a pu être exécuté."},
  };
  return liste;
}

std::pair<std::string_view, std::string> alias(const OutilVoix& outil) {
  const auto autres = autresNoms(outil);
  return {autres.empty() ? "" : autres.size() > 1 ? "Autres noms" : "Autre nom", Texte::joindre(autres, ", ")};
}

std::string formeOption(const OutilVoix* outil, const ParamVoix& p) {
  if (p.genre == ParamVoix::Genre::texte) return commeOption(p) + " " + majuscules(p.nom);
  return commeOption(p) + (outil && vraiParDefaut(*outil, p) ? "=false" : "");
}

std::string ditDe(const ParamVoix& p) { return (p.requis ? "Obligatoire. " : "") + p.description; }

std::string usage(const OutilVoix* outil) {
  std::string ligne = "Usage : tarnavellectl";
  if (!outil) return ligne + " VERBE [MOTS…] [--option VALEUR] [--drapeau]";
  ligne += " " + outil->nom;
  for (const ParamVoix* p : outil->textes())
    ligne += p->requis ? " " + majuscules(p->nom) : " [" + majuscules(p->nom) + "]";
  for (const ParamVoix& p : outil->parametres)
    if (p.genre == ParamVoix::Genre::booleen) ligne += " [" + formeOption(outil, p) + "]";
  return ligne;
}

Page generale(std::optional<std::size_t> colonnes) {
  Page page = {{usage(nullptr)}, {}};
  paragraphe(page, principes().front(), colonnes);
  Lexique porte, locales, issues;
  for (const OutilVoix& outil : verbes()) porte.ajouter(outil.nom, std::string(enBref(outil)));
  for (const CommandeLocale& c : commandesLocales()) locales.ajouter(c.outil.nom, std::string(enBref(c.outil)));
  for (const auto& [statut, sens] : statuts()) issues.ajouter(std::to_string(statut), std::string(sens));
  titre(page, "Verbes de la porte");
  porte.versPage(page, colonnes);
  titre(page, "Commandes du client");
  locales.versPage(page, colonnes);
  titre(page, "Options");
  lexiqueDOptions(page, nullptr, parametresCommuns(nullptr), colonnes);
  titre(page, "Statut de sortie");
  issues.versPage(page, colonnes);
  titre(page, "Pour aller plus loin");
  for (const std::string_view texte : {"« tarnavellectl aide VERBE » dit tout d'un verbe ou d'une commande.",
                                       "« tarnavellectl man | man -l - » montre le manuel.",
                                       "Sur un Mac : « tarnavellectl man | mandoc -a »."})
    page.push_back({std::string(retrait, ' ') + std::string(texte)});
  return page;
}

Page deCommande(const OutilVoix& outil, std::optional<std::size_t> colonnes) {
  Page page;
  paragraphe(page, usage(&outil), colonnes);
  page.push_back({});
  paragraphe(page, outil.description, colonnes);
  if (!outil.parametres.empty()) {
    titre(page, "Paramètres");
    lexiqueDOptions(page, &outil, outil.parametres, colonnes);
  }
  if (const auto [intitule, noms] = alias(outil); !noms.empty()) {
    titre(page, std::string(intitule));
    page.push_back({std::string(retrait, ' ') + noms});
  }
  titre(page, "Options");
  lexiqueDOptions(page, nullptr, parametresCommuns(&outil), colonnes);
  return page;
}

}  // namespace tarnavelle::Aide
