#include "Affichage.hpp"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Socle/Colonnes.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Affichage {
namespace {

constexpr std::size_t imbricationMax = 3;  ///< objects within objects; deeper ones stand as JSON
constexpr std::size_t colonnesMax = 40;    ///< records that differ more stand as JSON, one a line
constexpr std::size_t colonneMin = 6;      ///< no column of a cut table is made narrower

bool estSimple(const Json& valeur) { return !valeur.is_structured(); }

bool estListeDe(const Json& valeur, bool (*genre)(const Json&)) {
  return valeur.is_array() && !valeur.empty() && std::all_of(valeur.begin(), valeur.end(), genre);
}

bool estTable(const Json& valeur) {
  return estListeDe(valeur, [](const Json& v) { return v.is_object(); });
}

bool aDesLignes(const Json& valeur) {
  return valeur.is_string() && valeur.get_ref<const std::string&>().find('\n') != std::string::npos;
}

std::string texteDe(const Json& valeur) {
  if (valeur.is_string()) return valeur.get<std::string>();
  if (valeur.is_boolean()) return valeur.get<bool>() ? "oui" : "non";
  if (valeur.is_null() || (valeur.is_array() && valeur.empty())) return "—";
  if (const auto entier = entierExact(valeur)) return std::to_string(*entier);
  if (estListeDe(valeur, estSimple)) return Texte::joindre(valeur, ", ", texteDe);
  return EcritureJSON::compacte(valeur).value_or("");
}

/// A value on one line.
std::string enLigne(const Json& valeur) { return Inoffensif::montrable(texteDe(valeur)); }

/// The keys of the records, those that name a record first.
std::vector<std::string> cles(const Json& table) {
  std::vector<std::string> noms;
  std::set<std::string_view> vues;
  const auto ajouter = [&](std::string_view cle) {
    if (vues.insert(cle).second) noms.emplace_back(cle);
  };
  for (const char* tete : {"nom", "numero", "agent", "quand", "qui", "verbe"})
    if (std::any_of(table.begin(), table.end(), [&](const Json& f) { return f.contains(tete); })) ajouter(tete);
  for (const Json& fiche : table)
    for (const auto& [cle, valeur] : fiche.get_ref<const Json::object_t&>()) ajouter(cle);
  return noms;
}

struct Colonne {
  std::string titre;
  std::vector<std::string> cases;
  std::size_t largeur = 0;
};

/// The columns that hold something.
std::vector<Colonne> colonnesDe(const Json& table, const std::vector<std::string>& cles) {
  std::vector<Colonne> colonnes;
  for (const std::string& cle : cles) {
    Colonne colonne{.titre = Inoffensif::montrable(cle), .cases = {}};
    bool vide = true;
    for (const Json& fiche : table) {
      const Json* valeur = Champ::membre(fiche, cle);
      colonne.cases.push_back(valeur ? enLigne(*valeur) : "");
      vide = vide && colonne.cases.back().empty();
    }
    if (vide) continue;
    colonne.largeur = Colonnes::largeur(colonne.titre);
    for (const std::string& c : colonne.cases)
      colonne.largeur = std::max(colonne.largeur, Colonnes::largeur(c));
    colonnes.push_back(std::move(colonne));
  }
  return colonnes;
}

constexpr std::size_t gouttiere = 2;

/// Narrows the widest columns until the line fits, as far as that can be.
void resserrer(std::vector<Colonne>& colonnes, std::size_t place) {
  const auto total = [&colonnes](std::size_t plafond) {
    std::size_t n = 0;
    for (const Colonne& c : colonnes) n += std::min(c.largeur, plafond) + gouttiere;
    return n - gouttiere;
  };
  std::size_t plafond = std::max(place, colonneMin);
  while (plafond > colonneMin && total(plafond) > place) --plafond;
  for (Colonne& c : colonnes) c.largeur = std::min(c.largeur, plafond);
}

class Exposition {
 public:
  explicit Exposition(std::optional<std::size_t> colonnes) : colonnes_(colonnes) {}

  Page exposer(const Json& valeur) {
    bloc(valeur, 0, 0);
    return std::move(page_);
  }

 private:
  void poser(std::size_t retrait, const std::string& texte, bool titre = false) {
    std::string ligne = std::string(retrait, ' ') + texte;
    ligne.resize(ligne.find_last_not_of(' ') + 1);
    page_.push_back({std::move(ligne), titre});
  }

  void lignes(const std::string& texte, std::size_t retrait) {
    for (std::size_t debut = 0; debut <= texte.size();) {
      const auto fin = std::min(texte.find('\n', debut), texte.size());
      poser(retrait, Inoffensif::montrable(std::string_view(texte).substr(debut, fin - debut)));
      debut = fin + 1;
    }
  }

  void bloc(const Json& valeur, std::size_t retrait, std::size_t imbrication) {
    if (estTable(valeur)) return table(valeur, retrait);
    if (valeur.is_object() && !valeur.empty()) return objet(valeur, retrait, imbrication);
    if (valeur.is_array() && !valeur.empty()) return liste(valeur, retrait);
    if (valeur.is_string()) return lignes(valeur.get_ref<const std::string&>(), retrait);
    poser(retrait, enLigne(valeur));
  }

  void liste(const Json& elements, std::size_t retrait) {
    for (const Json& element : elements) poser(retrait, enLigne(element));
  }

  void table(const Json& fiches, std::size_t retrait) {
    const auto noms = cles(fiches);
    if (noms.size() > colonnesMax) return liste(fiches, retrait);
    auto colonnes = colonnesDe(fiches, noms);
    const auto place = colonnes_ ? std::optional(*colonnes_ - std::min(retrait, *colonnes_)) : std::nullopt;
    if (colonnes.empty()) return poser(retrait, "—");
    if (place) resserrer(colonnes, *place);
    const auto rangee = [&](auto texte, bool titre) {
      std::string ligne;
      for (const Colonne& c : colonnes)
        ligne += Colonnes::completer(Colonnes::couper(texte(c), c.largeur), c.largeur + gouttiere);
      ligne.resize(ligne.find_last_not_of(' ') + 1);
      poser(retrait, place ? Colonnes::couper(ligne, *place) : ligne, titre);
    };
    rangee([](const Colonne& c) { return std::string_view(c.titre); }, true);
    for (std::size_t i = 0; i < fiches.size(); ++i)
      rangee([i](const Colonne& c) { return std::string_view(c.cases[i]); }, false);
  }

  /// Members of one line first, aligned, then those that take more, each under its key.
  void objet(const Json& objet, std::size_t retrait, std::size_t imbrication) {
    const auto tientEnLigne = [&](const Json& v) {
      if (estTable(v) || aDesLignes(v)) return false;
      return !v.is_object() || v.empty() || imbrication >= imbricationMax;
    };
    std::size_t marge = 0;
    for (const auto& [cle, valeur] : objet.items())
      if (tientEnLigne(valeur)) marge = std::max(marge, Colonnes::largeur(Inoffensif::montrable(cle)));
    for (const auto& [cle, valeur] : objet.items())
      if (tientEnLigne(valeur))
        poser(retrait, Colonnes::completer(Inoffensif::montrable(cle), marge + gouttiere) + enLigne(valeur));
    for (const auto& [cle, valeur] : objet.items()) {
      if (tientEnLigne(valeur)) continue;
      if (!page_.empty()) page_.push_back({});
      poser(retrait, Inoffensif::montrable(cle), true);
      bloc(valeur, retrait + 2, imbrication + 1);
    }
  }

  std::optional<std::size_t> colonnes_;
  Page page_;
};

}  // namespace

Page exposer(const Json& donnees, std::optional<std::size_t> colonnes) {
  return Exposition(colonnes).exposer(donnees);
}

}  // namespace tarnavelle::Affichage
