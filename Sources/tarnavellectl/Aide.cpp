#include "Aide.hpp"

#include <algorithm>

#include "LigneCommande.hpp"
#include "Porte/CommandeControle.hpp"
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

/// Lines in two columns: terms, and what is said of each.
class Lexique {
 public:
  void ajouter(std::string terme, std::string texte) {
    entrees_.emplace_back(std::move(terme), std::move(texte));
  }

  void versPage(Page& page, std::optional<std::size_t> colonnes) const {
    std::size_t marge = 0;
    for (const auto& [terme, texte] : entrees_) marge = std::max(marge, retrait + Colonnes::largeur(terme) + 2);
    for (const auto& [terme, texte] : entrees_) {
      const auto place = colonnes ? std::max<std::size_t>(*colonnes, marge + 20) - marge : texte.size();
      std::string debut = Colonnes::completer(std::string(retrait, ' ') + terme, marge);
      for (const std::string& ligne : Colonnes::plier(texte, place)) {
        page.push_back({debut + ligne});
        debut.assign(marge, ' ');
      }
    }
  }

 private:
  std::vector<std::pair<std::string, std::string>> entrees_;
};

void paragraphe(Page& page, std::string_view texte, std::optional<std::size_t> colonnes) {
  for (std::string& ligne : Colonnes::plier(texte, colonnes.value_or(texte.size())))
    page.push_back({std::move(ligne)});
}

void titre(Page& page, std::string texte) {
  page.push_back({});
  page.push_back({std::move(texte), true});
}

void lexiqueDOptions(Page& page, const std::vector<ParamVoix>& parametres,
                     std::optional<std::size_t> colonnes) {
  Lexique lexique;
  for (const ParamVoix& p : parametres)
    lexique.ajouter(formeOption(p), p.requis ? "Obligatoire. " + p.description : p.description);
  lexique.versPage(page, colonnes);
}

std::vector<ParamVoix> parametresCommuns() {
  std::vector<ParamVoix> parametres;
  for (const OptionCommune& commune : optionsCommunes()) parametres.push_back(commune.parametre);
  return parametres;
}

}  // namespace

const std::vector<std::string_view>& principes() {
  static const std::vector<std::string_view> paragraphes = {
      "Les verbes du cockpit Tarnavelle dans un shell, par sa porte de commande : tarnavellectl en poste un, "
      "et montre la réponse.",
      "Les mots donnent les paramètres d'un verbe dans l'ordre, les obligatoires d'abord ; chacun peut aussi "
      "se donner par son option, « --option valeur » ou « --option=valeur ». Les tirets et les soulignés se "
      "valent, la casse du verbe ne compte pas, et « -- » met fin aux options. Un mot qui commence par un "
      "seul tiret reste un mot. Une valeur qui commence par deux tirets se donne avec « = ». Un drapeau se "
      "donne sans valeur, ou avec « = » : « --valider=false ».",
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
       "Pas de porte, pas de réponse lisible, ou réponse perdue en sortie. Le verbe a pu être exécuté."},
      {130, "Interrompu par Ctrl-C. Le verbe a pu être exécuté."},
  };
  return liste;
}

std::string_view premierePhrase(std::string_view texte) {
  const auto fin = texte.find(". ");
  return fin == texte.npos ? texte : texte.substr(0, fin + 1);
}

std::pair<std::string_view, std::string> alias(const OutilVoix& outil) {
  const auto autres = autresNoms(outil);
  return {autres.empty() ? "" : autres.size() > 1 ? "Autres noms" : "Autre nom", Texte::joindre(autres, ", ")};
}

std::string formeOption(const ParamVoix& p) {
  if (p.genre == ParamVoix::Genre::texte) return commeOption(p) + " " + majuscules(p.nom);
  // The description of a boolean starts with the value worth giving.
  return commeOption(p) + (p.description.starts_with("false") ? "=false" : "");
}

std::string usage(const OutilVoix* outil) {
  std::string ligne = "Usage : tarnavellectl";
  if (!outil) return ligne + " VERBE [MOTS…] [--option VALEUR] [--drapeau]";
  ligne += " " + outil->nom;
  for (const ParamVoix& p : outil->parametres)
    if (p.requis) ligne += " " + majuscules(p.nom);
  for (const ParamVoix& p : outil->parametres)
    if (!p.requis) ligne += " [" + formeOption(p) + "]";
  return ligne;
}

Page generale(std::optional<std::size_t> colonnes) {
  Page page = {{usage(nullptr)}, {}};
  paragraphe(page, principes().front(), colonnes);
  Lexique verbes, locales, issues;
  for (const OutilVoix& outil : CommandeControle::outilsPorte())
    verbes.ajouter(outil.nom, std::string(premierePhrase(outil.description)));
  for (const CommandeLocale& c : commandesLocales())
    locales.ajouter(c.outil.nom, std::string(premierePhrase(c.outil.description)));
  for (const auto& [statut, sens] : statuts()) issues.ajouter(std::to_string(statut), std::string(sens));
  titre(page, "Verbes de la porte");
  verbes.versPage(page, colonnes);
  titre(page, "Commandes du client");
  locales.versPage(page, colonnes);
  titre(page, "Options");
  lexiqueDOptions(page, parametresCommuns(), colonnes);
  titre(page, "Statut de sortie");
  issues.versPage(page, colonnes);
  titre(page, "Pour aller plus loin");
  for (const std::string_view texte : {"« tarnavellectl aide VERBE » dit tout d'un verbe ou d'une commande.",
                                       "« tarnavellectl man | man -l - » montre le manuel."})
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
    lexiqueDOptions(page, outil.parametres, colonnes);
  }
  if (const auto [intitule, noms] = alias(outil); !noms.empty()) {
    titre(page, std::string(intitule));
    page.push_back({std::string(retrait, ' ') + noms});
  }
  titre(page, "Options");
  lexiqueDOptions(page, parametresCommuns(), colonnes);
  return page;
}

}  // namespace tarnavelle::Aide
