#include "Manuel.hpp"

#include <string_view>

#include "Aide.hpp"
#include "Catalogue.hpp"
#include "LigneCommande.hpp"
#include "Porte/GuideAgent.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/Version.hpp"
#include "Socle/Colonnes.hpp"

namespace tarnavelle::Manuel {
namespace {

/// Text for troff: what it would read as its own is escaped, and a line never starts with a control
/// character.
std::string troff(std::string_view texte) {
  std::string echappe;
  for (std::size_t i = 0; i < texte.size(); ++i) {
    switch (const char c = texte[i]) {
      case ' ': echappe += Colonnes::inseparables(texte.substr(0, i), texte.substr(i + 1)) ? "\\~" : " "; break;
      case '\\': echappe += "\\e"; break;
      case '-': echappe += "\\-"; break;
      case '\'': echappe += "\\(aq"; break;
      case '"': echappe += "\\(dq"; break;
      case '`': echappe += "\\(ga"; break;
      case '^': echappe += "\\(ha"; break;
      case '~': echappe += "\\(ti"; break;
      default: echappe += c;
    }
  }
  return (echappe.starts_with('.') ? "\\&" : "") + echappe;
}

class Troff {
 public:
  std::string texte;

  void section(std::string_view titre) { ligne(".SH ", titre); }
  void sousSection(std::string_view titre) { ligne(".SS ", titre); }
  void paragraphe(std::string_view contenu) {
    texte += ".PP\n";
    ligne("", contenu);
  }
  void terme(std::string_view nom, std::string_view contenu) {
    texte += ".TP\n";
    ligne(".B ", nom);
    ligne("", contenu);
  }
  void exemple(std::string_view commande) {
    texte += ".PP\n.RS 4\n.nf\n";
    ligne("", commande);
    texte += ".fi\n.RE\n";
  }

 private:
  void ligne(std::string_view macro, std::string_view contenu) {
    texte.append(macro).append(troff(contenu)).append("\n");
  }
};

void commandeEntiere(Troff& page, const OutilVoix& outil) {
  page.sousSection(outil.nom);
  page.paragraphe(Aide::usage(&outil));
  page.paragraphe(outil.description);
  for (const ParamVoix& p : outil.parametres) page.terme(Aide::formeOption(&outil, p), Aide::ditDe(p));
  if (const auto [intitule, noms] = Aide::alias(outil); !noms.empty()) page.terme(intitule, noms);
}

}  // namespace

std::string page() {
  Troff page;
  page.texte = ".TH TARNAVELLECTL 1 \"\" \"Tarnavelle " + std::string(versionTarnavelle) + "\"\n";
  page.texte += ".nh\n.ad l\n";  // the formatter may not know how French words are cut
  page.section("NOM");
  page.texte += "tarnavellectl \\- les verbes du cockpit Tarnavelle depuis un shell\n";
  page.section("SYNOPSIS");
  page.texte +=
      ".B tarnavellectl\n.I verbe\n[\\fImots\\fR...] [\\fB\\-\\-\\fIoption valeur\\fR] "
      "[\\fB\\-\\-\\fIdrapeau\\fR]\n";
  page.section("DESCRIPTION");
  for (const auto paragraphe : Aide::principes()) page.paragraphe(paragraphe);
  page.section("OPTIONS");
  for (const ParamVoix& p : parametresCommuns(nullptr))
    page.terme(Aide::formeOption(nullptr, p), Aide::ditDe(p));
  page.section("VERBES DE LA PORTE");
  for (const OutilVoix& outil : verbes()) commandeEntiere(page, outil);
  page.section("COMMANDES DU CLIENT");
  for (const CommandeLocale& c : commandesLocales()) commandeEntiere(page, c.outil);
  page.section("STATUT DE SORTIE");
  for (const auto& [statut, sens] : Aide::statuts()) page.terme(std::to_string(statut), sens);
  page.section("ENVIRONNEMENT");
  for (const auto& [nom, sens] : Aide::variables()) page.terme(nom, sens);
  page.section("FICHIERS");
  page.terme("~/" + PorteControle::cheminEndpointUsuel(),
             "L'adresse et le jeton de la porte, que le cockpit écrit quand il l'ouvre.");
  page.section("EXEMPLES");
  for (const auto exemple : GuideAgent::exemplesCLI()) page.exemple("tarnavellectl " + std::string(exemple));
  page.section("VOIR AUSSI");
  page.paragraphe("tarnavelle-mcp, le pont MCP, pour les agents dont le programme parle MCP.");
  return std::move(page.texte);
}

}  // namespace tarnavelle::Manuel
